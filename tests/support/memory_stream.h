#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "qncore/interface_ptr.h"
#include "qncore/streams.h"

namespace support {

/// A read stream over a text, or over what a function returns. Nobody skips in it.
class MemoryReadStream final : public qncore::RefCounted<qncore::AtomicRefCount>,
                               public qncore::IReadStream {
  public:
    using Source = std::function<std::uint64_t(void* buffer, std::uint64_t count)>;

    explicit MemoryReadStream(Source source)
        : source_(std::move(source)) {}
    explicit MemoryReadStream(std::string text, std::uint64_t largest_read = ~std::uint64_t{0})
        : source_([text = std::move(text), done = std::size_t{0},
                   largest_read](void* buffer, std::uint64_t count) mutable {
            const std::size_t step =
                text.copy(static_cast<char*>(buffer), std::min(count, largest_read), done);
            done += step;
            return step;
        }) {}

    std::uint64_t read(void* buffer, std::uint64_t count) override {
        return source_(buffer, count);
    }
    std::uint64_t skip(std::uint64_t /*count*/) override { return 0; }
    std::uint64_t available() override { return 0; }

  private:
    Source source_;
};

/// A write stream that records the size of each write.
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
