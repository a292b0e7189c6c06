#pragma once

namespace qncore {

/// Marks an object whose content its next owner takes over without copying.
template <class T>
class TransferSource {
  public:
    explicit TransferSource(T& source) noexcept
        : source_(&source) {}
    T& get() const noexcept { return *source_; }

  private:
    T* source_;
};

} // namespace qncore
