#pragma once

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

    explicit MemoryReadStream(std::string text, std::uint64_t largest_read = ~std::uint64_t{0});
    explicit MemoryReadStream(Source source)
        : source_(std::move(source)) {}

    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t skip(std::uint64_t count) override;
    std::uint64_t available() override;

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
    std::uint64_t write(const void* buffer, std::uint64_t count) override;

    std::string text;
    std::vector<std::size_t> writes; ///< sizes
};

} // namespace support
