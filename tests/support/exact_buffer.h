#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

namespace support {

/// A copy of a text in a heap block of exactly its length, so that a sanitizer sees each byte
/// read beyond it.
class ExactBuffer {
  public:
    explicit ExactBuffer(std::string_view text)
        : size_(text.size())
        , bytes_(std::make_unique<char[]>(text.size())) {
        std::copy(text.begin(), text.end(), bytes_.get());
    }
    const char* data() const noexcept { return bytes_.get(); }
    std::size_t size() const noexcept { return size_; }

  private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

} // namespace support
