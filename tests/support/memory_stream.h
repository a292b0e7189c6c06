#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "qncore/interface_ptr.h"
#include "qncore/streams.h"

namespace support {

/// A read stream over a text, or over whatever a function delivers.
class MemoryReadStream final : public qncore::RefCounted<qncore::AtomicRefCount>,
                               public qncore::IReadStream {
  public:
    using Source = std::function<std::uint64_t(void* buffer, std::uint64_t count)>;

    explicit MemoryReadStream(std::string text, std::uint64_t largest_read = ~std::uint64_t{0})
        : text_(std::move(text))
        , largest_read_(largest_read) {}
    explicit MemoryReadStream(Source source)
        : source_(std::move(source)) {}

    std::uint64_t read(void* buffer, std::uint64_t count) override {
        ++reads_;
        if (source_) {
            return source_(buffer, count);
        }
        const char* const bytes = text_.data() + position_;
        const std::uint64_t step = skip(std::min(count, largest_read_));
        std::copy_n(bytes, step, static_cast<char*>(buffer));
        return step;
    }
    std::uint64_t skip(std::uint64_t count) override {
        const std::uint64_t step = std::min(count, available());
        position_ += step;
        return step;
    }
    std::uint64_t available() override { return text_.size() - position_; }

    std::uint64_t reads() const noexcept { return reads_; }

  private:
    std::string text_;
    std::uint64_t position_ = 0;
    std::uint64_t largest_read_ = ~std::uint64_t{0};
    std::uint64_t reads_ = 0;
    Source source_;
};

/// A write stream that keeps each write apart.
class MemoryWriteStream final : public qncore::IWriteStream {
  public:
    std::uint64_t write(const void* buffer, std::uint64_t count) override {
        text.append(static_cast<const char*>(buffer), count);
        writes.push_back(count);
        return count;
    }

    std::string text;
    std::vector<std::size_t> writes; ///< sizes
};

} // namespace support
