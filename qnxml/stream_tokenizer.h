#pragma once

#include "qncore/interface_ptr.h"
#include "qncore/streams.h"
#include "qnxml/buffered_stream_tokenizer.h"

namespace qnxml {

/// The tokenizer over a byte stream, which it keeps alive. No stream is an empty source. What the
/// stream throws, if it is a std::exception, becomes the error "Error reading from stream".
class XmlStreamTokenizer : public XmlBufferedStreamTokenizerBase {
  public:
    using Stream = qncore::InterfacePtr<qncore::IReadStream, qncore::AtomicHolder>;

    /// `uri` and `firstLine` go into locations; `bufferSize` is in bytes, at least 32.
    XmlStreamTokenizer(qnuri::UriReference uri, std::uint32_t firstLine, std::size_t bufferSize,
                       Stream stream);

  protected:
    bool read(void* buffer, std::uint64_t size, std::uint64_t* count) override;

  private:
    Stream stream_;
};

} // namespace qnxml
