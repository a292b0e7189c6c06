#include "tests/support/memory_stream.h"

#include <algorithm>

namespace support {

MemoryReadStream::MemoryReadStream(std::string text, std::uint64_t largest_read)
    : text_(std::move(text))
    , largest_read_(largest_read) {}

std::uint64_t MemoryReadStream::read(void* buffer, std::uint64_t count) {
    ++reads_;
    if (source_) {
        return source_(buffer, count);
    }
    const std::uint64_t step = std::min({count, largest_read_, available()});
    std::copy_n(text_.data() + position_, step, static_cast<char*>(buffer));
    position_ += step;
    return step;
}

std::uint64_t MemoryReadStream::skip(std::uint64_t count) {
    const std::uint64_t step = std::min(count, available());
    position_ += step;
    return step;
}

std::uint64_t MemoryReadStream::available() {
    return text_.size() - position_;
}

std::uint64_t MemoryWriteStream::write(const void* buffer, std::uint64_t count) {
    text.append(static_cast<const char*>(buffer), count);
    writes.push_back(count);
    return count;
}

} // namespace support
