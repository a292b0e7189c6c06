#pragma once

#include <memory>

#include "qnxml/char_stream_tokenizer.h"

namespace qnxml {

/// Supplies the tokenizer with characters from a byte buffer: refills it, finds the ends of UTF-8
/// sequences, turns every line end (CR, LF, CRLF) into one byte 10, and tracks the position. Reads
/// UTF-8 only.
///
/// A CR as the last byte of the data, and a character cut by the end of the data, yield no
/// character. If text was held at that point, the last fill of the buffer is read again (required).
class XmlBufferedStreamTokenizerBase : public XmlCharStreamTokenizerBase {
  public:
    XmlLocation location() const override;

  protected:
    /// `bufferSize` is in bytes; less than 32 counts as 32.
    XmlBufferedStreamTokenizerBase(qnuri::UriReference uri, std::uint32_t firstLine,
                                   std::size_t bufferSize);

    int get_next_char(char* out) final;

    /// Reads up to `size` bytes and stores their number in `count` unless that is null: 0 at the
    /// end of the data. Returns false after a failure, which it has stored.
    virtual bool read(void* buffer, std::uint64_t size, std::uint64_t* count) = 0;

  private:
    bool refill(std::size_t kept, std::uint64_t* count);
    int get_line_end(char* out);
    int get_sequence(char* out);
    int get_cut_sequence(char* out);
    int invalid_sequence();
    int end_with_stale_data();
    int take(char* out, std::size_t length);
    std::size_t at_hand() const { return static_cast<std::size_t>(dataEnd_ - cursor_); }

    std::size_t capacity_;
    std::unique_ptr<char[]> buffer_;
    std::uint32_t line_;
    const char* lineStart_;         ///< start of the buffer if the line began in an earlier fill
    std::uint64_t lineCarry_ = 0;   ///< bytes of the line in earlier fills
    std::uint64_t sourceCarry_ = 0; ///< bytes of all earlier fills
    bool staleDataRead_ = false;
    qnuri::UriReference uri_;
};

} // namespace qnxml
