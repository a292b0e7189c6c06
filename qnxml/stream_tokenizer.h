#pragma once

#include "qncore/interface_ptr.h"
#include "qncore/streams.h"
#include "qnxml/buffered_stream_tokenizer.h"

namespace qnxml {

/// The tokenizer over a byte stream, which it keeps alive. A null stream is an empty source. A
/// std::exception of the stream becomes the error "Error reading from stream".
class XmlStreamTokenizer : public XmlBufferedStreamTokenizerBase {
  public:
    using Stream = qncore::InterfacePtr<qncore::IReadStream, qncore::AtomicHolder>;

    /// `uri` and `firstLine` are used in locations; `bufferSize` is in bytes, at least 32.
    XmlStreamTokenizer(qnuri::UriReference uri, std::uint32_t firstLine, std::size_t bufferSize,
                       Stream stream);

  protected:
    bool read(void* buffer, std::uint64_t size, std::uint64_t* count) override;

  private:
    Stream stream_;
};

} // namespace qnxml
