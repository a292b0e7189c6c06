#include "qnxml/stream_tokenizer.h"

namespace qnxml {

namespace {

constexpr const char* error_reading = "Error reading from stream";

void store(std::uint64_t* count, std::uint64_t value) {
    if (count != nullptr) {
        *count = value;
    }
}

/// Reads from the stream's buffer where it has one, else (and at the buffer's end) from the stream.
/// False when the stream itself has failed.
bool read_some(std::istream& stream, char* buffer, std::streamsize size, std::streamsize* count) {
    *count = stream.rdbuf() != nullptr ? stream.rdbuf()->sgetn(buffer, size) : 0;
    if (*count != 0) {
        return true;
    }
    if (stream.good()) {
        stream.read(buffer, size);
        *count = stream.gcount();
    }
    return !stream.fail() || stream.eof();
}

} // namespace

XmlStreamTokenizer::XmlStreamTokenizer(qnuri::UriReference uri, std::uint32_t firstLine,
                                       std::size_t bufferSize, Stream stream)
    : XmlBufferedStreamTokenizerBase(std::move(uri), firstLine, bufferSize)
    , stream_(std::move(stream)) {}

bool XmlStreamTokenizer::read(void* buffer, std::uint64_t size, std::uint64_t* count) {
    try {
        store(count, stream_ ? stream_->read(buffer, size) : 0);
        return true;
    } catch (const std::exception& exception) {
        const auto here = QN_LOCATION("qnxml::XmlStreamTokenizer::read()");
        stream_failure(error_reading, here, qncore::ErrorInfo::from_exception(exception, here));
        return false;
    }
}

XmlStdStreamTokenizer::XmlStdStreamTokenizer(qnuri::UriReference uri, std::uint32_t firstLine,
                                             std::size_t bufferSize, std::istream* stream)
    : XmlBufferedStreamTokenizerBase(std::move(uri), firstLine, bufferSize)
    , stream_(stream) {}

bool XmlStdStreamTokenizer::read(void* buffer, std::uint64_t size, std::uint64_t* count) {
    const auto here = QN_LOCATION("qnxml::XmlStdStreamTokenizer::read()");
    try {
        std::streamsize delivered = 0;
        if (stream_ != nullptr && !read_some(*stream_, static_cast<char*>(buffer),
                                             static_cast<std::streamsize>(size), &delivered)) {
            stream_failure(error_reading, here, {});
            return false;
        }
        store(count, static_cast<std::uint64_t>(delivered));
        return true;
    } catch (const std::exception& exception) {
        stream_failure(error_reading, here, qncore::ErrorInfo::from_exception(exception, here));
        return false;
    }
}

} // namespace qnxml
