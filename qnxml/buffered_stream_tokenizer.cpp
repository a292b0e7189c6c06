#include "qnxml/buffered_stream_tokenizer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "qncore/error_exception.h"
#include "qncore/utf8.h"

namespace qnxml {

namespace {

constexpr std::size_t least_capacity = 32;

} // namespace

XmlBufferedStreamTokenizerBase::XmlBufferedStreamTokenizerBase(qnuri::UriReference uri,
                                                               std::uint32_t firstLine,
                                                               std::size_t bufferSize)
    : capacity_(std::max(bufferSize, least_capacity))
    , buffer_(std::make_unique_for_overwrite<char[]>(capacity_))
    , line_(firstLine)
    , lineStart_(buffer_.get())
    , uri_(std::move(uri)) {
    cursor_ = buffer_.get();
    dataEnd_ = buffer_.get();
}

XmlLocation XmlBufferedStreamTokenizerBase::location() const {
    return {uri_, line_, lineCarry_ + static_cast<std::uint64_t>(cursor_ - lineStart_),
            sourceCarry_ + static_cast<std::uint64_t>(cursor_ - buffer_.get())};
}

/// Reads after the first `kept` bytes of the buffer and moves the cursor to its start. Does not
/// change the end of the data.
bool XmlBufferedStreamTokenizerBase::refill(std::size_t kept, std::uint64_t* count) {
    lineCarry_ += static_cast<std::uint64_t>(cursor_ - lineStart_);
    sourceCarry_ += static_cast<std::uint64_t>(cursor_ - buffer_.get());
    cursor_ = buffer_.get();
    lineStart_ = buffer_.get();
    const std::size_t room = capacity_ - kept;
    if (!read(buffer_.get() + kept, room, count)) {
        return false;
    }
    if (*count > room) {
        stream_failure("Error reading from stream",
                       QN_LOCATION("qnxml::XmlBufferedStreamTokenizerBase::refill()"), {});
        return false;
    }
    return true;
}

int XmlBufferedStreamTokenizerBase::get_next_char(char* out) {
    if (cursor_ == dataEnd_) {
        std::uint64_t count = 0;
        if (!refill(0, &count)) {
            dataEnd_ = cursor_;
            return -1;
        }
        dataEnd_ = cursor_ + count;
        if (count == 0) {
            return 0;
        }
    }
    const auto byte = static_cast<unsigned char>(*cursor_);
    if (byte == '\r' || byte == '\n') {
        return get_line_end(out);
    }
    return byte < 0x80 ? take(out, 1) : get_sequence(out);
}

int XmlBufferedStreamTokenizerBase::take(char* out, std::size_t length) {
    std::memcpy(out, cursor_, length);
    cursor_ += length;
    return static_cast<int>(length);
}

/// The end of the data after a CR or inside a sequence. Required: the end of the old data stays, so
/// a caller that continues reads the content of the buffer again. The second time it is corrected;
/// otherwise `<a>x` and a CR would never end.
int XmlBufferedStreamTokenizerBase::end_with_stale_data() {
    if (std::exchange(staleDataRead_, true)) {
        dataEnd_ = cursor_;
    }
    return 0;
}

int XmlBufferedStreamTokenizerBase::get_line_end(char* out) {
    if (*cursor_++ == '\r') {
        if (cursor_ == dataEnd_) {
            std::uint64_t count = 0;
            if (!refill(0, &count)) {
                return -1;
            }
            if (count == 0) {
                return end_with_stale_data();
            }
            dataEnd_ = cursor_ + count;
        }
        if (*cursor_ == '\n') {
            ++cursor_;
        }
    }
    ++line_;
    lineCarry_ = 0;
    lineStart_ = cursor_;
    *out = '\n';
    return 1;
}

int XmlBufferedStreamTokenizerBase::get_sequence(char* out) {
    const std::size_t length = qncore::utf8_to_ucs4_char(cursor_, at_hand(), nullptr);
    if (length > 0) {
        return take(out, length);
    }
    if (qncore::utf8_sequence_length(*cursor_) <= at_hand()) {
        return invalid_sequence();
    }
    return get_cut_sequence(out);
}

/// Completes a sequence that is cut by the end of the buffer. One that is cut by the end of the
/// data is lost.
int XmlBufferedStreamTokenizerBase::get_cut_sequence(char* out) {
    const std::size_t kept = at_hand();
    std::memmove(buffer_.get(), cursor_, kept);
    std::uint64_t count = 0;
    if (!refill(kept, &count)) {
        return -1;
    }
    if (count == 0) {
        return end_with_stale_data();
    }
    dataEnd_ = cursor_ + kept + count;
    return get_next_char(out);
}

int XmlBufferedStreamTokenizerBase::invalid_sequence() {
    qncore::ErrorInfoPtr nested;
    try {
        qncore::check_valid_utf8(cursor_, at_hand());
    } catch (const qncore::ErrorException& exception) {
        nested = exception.info();
    }
    stream_failure("Invalid UTF-8 character in stream",
                   QN_LOCATION("qnxml::XmlBufferedStreamTokenizerBase::get_next_char()"),
                   std::move(nested));
    return -1;
}

} // namespace qnxml
