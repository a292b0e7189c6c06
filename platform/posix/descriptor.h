#pragma once

#include <unistd.h>
#include <utility>

namespace platform {

/// Owns a file descriptor for a scope.
class Descriptor {
  public:
    explicit Descriptor(int descriptor) noexcept
        : descriptor_(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    int get() const noexcept { return descriptor_; }
    /// Releases ownership without closing the descriptor.
    int release() noexcept { return std::exchange(descriptor_, -1); }

  private:
    int descriptor_;
};

} // namespace platform
