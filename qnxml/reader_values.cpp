// References, and the values of nodes as a buffer and as a stream.
#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "qncore/utf8.h"
#include "qnxml/reader.h"
#include "qnxml/reader_location.h"

namespace qnxml {

namespace {

constexpr std::uint64_t no_position = ~std::uint64_t{0};

/// Pieces up to this size are gathered in the buffer before they are written to a stream.
constexpr std::size_t largest_gathered_piece = 64;
constexpr std::size_t gathered_bytes = 128;

constexpr std::string_view broken = "Value cannot be read after a parse error";
constexpr std::string_view read_through_stream =
    "Value has already been read through stream, cannot create value buffer";

struct PredefinedEntity {
    std::string_view name;
    std::string_view text;
};

constexpr std::array<PredefinedEntity, 5> predefined_entities{
    {{"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"apos", "'"}}};

/// The code point of a character reference; all ones if it is too large for 32 bits.
std::uint32_t code_point_of(std::string_view reference) noexcept {
    const bool hex = reference.starts_with('x');
    reference.remove_prefix(hex ? 1 : 0);
    std::uint32_t value = 0;
    const auto result = std::from_chars(reference.data(), reference.data() + reference.size(),
                                        value, hex ? 16 : 10);
    return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint32_t>::max()
                                                       : value;
}

} // namespace

/// Appends the text of the last token if it is a reference; with a null destination only checks it.
/// Returns false for any other token.
bool XmlReader::eval_reference(std::string* destination) {
    if (lastToken_ == XmlTokenType::CharRef) {
        eval_char_ref(destination);
        return true;
    }
    if (lastToken_ == XmlTokenType::EntityRef) {
        resolve_entity_ref(destination);
        return true;
    }
    return false;
}

void XmlReader::eval_char_ref(std::string* destination) {
    const std::uint32_t code_point = code_point_of(token_text());
    std::array<char, 8> bytes{};
    const std::size_t length =
        qncore::ucs4_char_to_utf8(code_point, bytes.data(), bytes.data() + bytes.size());
    if (code_point == 0 || length == 0) {
        // Required: the parameter's name lacks a letter, so the message keeps its placeholder.
        fail("Invalid character reference: '{@charReference}'", QN_READER_LOCATION("eval_char_ref"),
             {{"charReferece", token_text()}});
    }
    if (destination != nullptr) {
        append_limited(*destination, {bytes.data(), length});
    }
}

void XmlReader::resolve_entity_ref(std::string* destination) {
    const std::string_view name = token_text();
    const auto* const entity =
        std::find_if(predefined_entities.begin(), predefined_entities.end(),
                     [name](const PredefinedEntity& known) { return known.name == name; });
    if (entity != predefined_entities.end()) {
        if (destination != nullptr) {
            append_limited(*destination, entity->text);
        }
        return;
    }
    if (entityResolver_ == nullptr) {
        fail("Unable to resolve entity reference '{@entityReference}'; no entity resolver "
             "specified",
             QN_READER_LOCATION("resolve_entity_ref"), {{"entityReference", name}});
    }
    std::string text;
    if (!entityResolver_->resolve(tokenizer_->token_text(),
                                  destination != nullptr ? &text : nullptr)) {
        fail("Unable to resolve entity reference '{@entityReference}'",
             QN_READER_LOCATION("resolve_entity_ref"), {{"entityReference", name}});
    }
    if (destination != nullptr) {
        destination->append(text);
    }
}

const std::string& XmlReader::value() {
    if (valueState_ != ValueState::Buffered) {
        read_value_into_buffer();
    }
    return value_;
}

void XmlReader::read_value_into_buffer() {
    if (valueState_ == ValueState::Broken) {
        fail(broken, QN_READER_LOCATION("read_value_into_buffer"));
    }
    if (valueState_ == ValueState::Buffered) {
        fail("Value has already been read, cannot create value buffer",
             QN_READER_LOCATION("read_value_into_buffer"));
    }
    if (valueState_ != ValueState::Unread) {
        fail(read_through_stream, QN_READER_LOCATION("read_value_into_buffer"));
    }
    if (state_ == State::TextBody || state_ == State::WhitespaceBody) {
        while (fetch_token() == XmlTokenType::CharData || eval_reference(&value_)) {
            if (lastToken_ == XmlTokenType::CharData) {
                append_limited(value_, token_text());
            }
        }
        push_back();
        state_ = State::Content;
    } else if (const Section* const section = find_section(state_)) {
        while (fetch_token() != section->end) {
            if (lastToken_ != XmlTokenType::CharData) {
                fail_unexpected_token(QN_READER_LOCATION("read_value_into_buffer"));
            }
            append_limited(value_, token_text());
        }
        state_ = section->after;
    }
    valueState_ = ValueState::Buffered;
}

/// Writes out the content of the buffer.
void XmlReader::flush_value(qncore::IWriteStream& stream) {
    if (!value_.empty()) {
        stream.write(value_.data(), value_.size());
        value_.clear();
    }
}

void XmlReader::read_value_into_stream(qncore::IWriteStream& stream) {
    if (valueState_ == ValueState::Broken) {
        fail(broken, QN_READER_LOCATION("read_value_into_stream"));
    }
    if (valueState_ == ValueState::Streaming || valueState_ == ValueState::Consumed) {
        fail(read_through_stream, QN_READER_LOCATION("read_value_into_stream"));
    }
    if (valueState_ == ValueState::Unread) {
        valueState_ = ValueState::Streaming;
        if (state_ == State::TextBody || state_ == State::WhitespaceBody) {
            write_text(stream);
        } else if (const Section* const section = find_section(state_)) {
            write_section(*section, stream);
        }
    }
    flush_value(stream);
    valuePosition_ = no_position;
    valueState_ = ValueState::Consumed;
}

/// Gathers small pieces in the buffer and writes large ones directly.
void XmlReader::write_text(qncore::IWriteStream& stream) {
    while (fetch_token() == XmlTokenType::CharData || eval_reference(&value_)) {
        if (lastToken_ != XmlTokenType::CharData) {
            continue;
        }
        const std::string_view chunk = token_text();
        if (value_.size() >= gathered_bytes || chunk.size() > largest_gathered_piece) {
            flush_value(stream);
        }
        if (chunk.size() > largest_gathered_piece) {
            stream.write(chunk.data(), chunk.size());
        } else {
            append_limited(value_, chunk);
        }
    }
    push_back();
    state_ = State::Content;
}

void XmlReader::write_section(const Section& section, qncore::IWriteStream& stream) {
    flush_value(stream);
    while (fetch_token() != section.end) {
        if (lastToken_ != XmlTokenType::CharData) {
            fail_unexpected_token(QN_READER_LOCATION("read_value_into_stream"));
        }
        stream.write(token_text().data(), token_text().size());
    }
    state_ = section.after;
}

/// Copies what fits from the value position, unless `data` is null, and moves the position.
std::uint64_t XmlReader::copy_value(std::string_view source, char* data, std::uint64_t size) {
    source.remove_prefix(valuePosition_);
    const std::string_view piece = source.substr(0, size);
    if (data != nullptr) {
        std::copy(piece.begin(), piece.end(), data);
    }
    valuePosition_ = piece.size() < source.size() ? valuePosition_ + piece.size() : no_position;
    return piece.size();
}

/// Delivers up to `size` bytes of the value to `data`, or skips them if that is null.
std::uint64_t XmlReader::stream_read_aux(char* data, std::uint64_t size) {
    if (valueState_ == ValueState::Consumed) {
        return 0;
    }
    if (valueState_ != ValueState::Streaming) {
        valueState_ = ValueState::Streaming;
        if (value_.empty()) {
            valuePosition_ = no_position;
        }
    }
    std::uint64_t delivered = 0;
    const auto deliver = [&](std::string_view source) {
        delivered +=
            copy_value(source, data != nullptr ? data + delivered : nullptr, size - delivered);
    };
    for (;;) {
        if (valuePosition_ < value_.size()) {
            deliver(value_);
            if (valuePosition_ == no_position) {
                value_.clear();
            }
        }
        if (delivered == size || !stream_next_token()) {
            return delivered;
        }
        if (lastToken_ == XmlTokenType::CharData) {
            deliver(token_text());
        }
    }
}

/// Provides a token with text of the value that is still to be delivered: a chunk, or a reference,
/// whose text it puts into the buffer. Returns false at the end of the value.
bool XmlReader::stream_next_token() {
    const bool in_text = state_ == State::TextBody || state_ == State::WhitespaceBody;
    const Section* const section = find_section(state_);
    if (!in_text && section == nullptr) {
        valueState_ = ValueState::Consumed;
        return false;
    }
    if (valuePosition_ == no_position) {
        fetch_token();
        valuePosition_ = 0;
    }
    if (lastToken_ == XmlTokenType::CharData) {
        return true;
    }
    if (in_text) {
        if (eval_reference(&value_)) {
            // A resolver's text may be empty. Then the next token follows.
            valuePosition_ = value_.empty() ? no_position : 0;
            return true;
        }
        push_back();
        state_ = State::Content;
        valueState_ = ValueState::Consumed;
        return false;
    }
    // Required: here the data of an instruction ends with the end of a CDATA section, so its own
    // end fails.
    const bool in_pi = state_ == State::PiBody;
    if (lastToken_ != (in_pi ? XmlTokenType::CDATAEnd : section->end)) {
        fail_unexpected_token(QN_READER_LOCATION("stream_read_aux"));
    }
    state_ = State::Content;
    if (!in_pi) {
        valueState_ = ValueState::Consumed;
    }
    return false;
}

std::uint64_t XmlReader::ValueReadStreamImpl::read(void* buffer, std::uint64_t count) {
    check_state();
    return reader_->stream_read_aux(static_cast<char*>(buffer), count);
}

std::uint64_t XmlReader::ValueReadStreamImpl::skip(std::uint64_t count) {
    return read(nullptr, count);
}

std::uint64_t XmlReader::ValueReadStreamImpl::available() {
    check_state();
    switch (reader_->valueState_) {
    case ValueState::Consumed:
        return 0;
    case ValueState::Buffered:
        return reader_->value_.size();
    default:
        return no_position;
    }
}

void XmlReader::ValueReadStreamImpl::check_state() {
    if (reader_->valueState_ == ValueState::Broken) {
        // Required: a single colon after the class.
        reader_->fail(broken, QN_LOCATION("qnxml::XmlReader:ValueReadStreamImpl::check_state()"));
    }
}

} // namespace qnxml
