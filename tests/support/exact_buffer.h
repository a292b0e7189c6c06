#pragma once

#include <string_view>
#include <vector>

namespace support {

/// A copy of a text in a heap block of exactly its length, so that a sanitizer sees each byte
/// read beyond it.
struct ExactBuffer : std::vector<char> {
    explicit ExactBuffer(std::string_view text)
        : vector(text.begin(), text.end()) {}
};

} // namespace support
