#pragma once

namespace qncore {

/// Marks an object whose content is moved to a new owner.
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
