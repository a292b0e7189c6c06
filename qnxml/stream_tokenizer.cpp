#include "qnxml/stream_tokenizer.h"

namespace qnxml {

XmlStreamTokenizer::XmlStreamTokenizer(qnuri::UriReference uri, std::uint32_t firstLine,
                                       std::size_t bufferSize, Stream stream)
    : XmlBufferedStreamTokenizerBase(std::move(uri), firstLine, bufferSize)
    , stream_(std::move(stream)) {}

bool XmlStreamTokenizer::read(void* buffer, std::uint64_t size, std::uint64_t* count) {
    try {
        const std::uint64_t delivered = stream_ ? stream_->read(buffer, size) : 0;
        if (count != nullptr) {
            *count = delivered;
        }
        return true;
    } catch (const std::exception& exception) {
        const auto here = QN_LOCATION("qnxml::XmlStreamTokenizer::read()");
        stream_failure("Error reading from stream", here,
                       qncore::ErrorInfo::from_exception(exception, here));
        return false;
    }
}

} // namespace qnxml
