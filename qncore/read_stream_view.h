#pragma once

#include "qncore/ref_counted.h"
#include "qncore/streams.h"

namespace qncore {

/// A read-only range of a file with a position of its own, which counts from the view's start.
/// Views form a tree: each is a part of its parent's range and keeps the parent and the root, the
/// whole file, alive. Threads may use different views of one tree at the same time, but not one
/// view.
class ISeekableReadStreamView : public ISeekableReadStream {
  public:
    /// Length of the view; of a root, the file's length as it is now.
    virtual std::uint64_t size() = 0;
    virtual std::uint64_t offset_in_parent() = 0;
    virtual std::uint64_t offset_in_file() = 0;
    /// The parent of the root is null.
    virtual RefCountPtr<ISeekableReadStreamView> parent() = 0;
    virtual RefCountPtr<ISeekableReadStreamView> root() = 0;

    /// Returns a child of `size` bytes (without a size: all that follow) that begins at `offset`
    /// of this view. Throws error.qnfile.io.view.badRange if the range is not within this view and
    /// the file.
    virtual RefCountPtr<ISeekableReadStreamView> create_view(std::uint64_t offset,
                                                             std::uint64_t size) = 0;
    virtual RefCountPtr<ISeekableReadStreamView> create_view(std::uint64_t offset) = 0;

    /// The view's object, as the holder of an InterfacePtr.
    virtual const RefCounted<AtomicRefCount>& counted() const noexcept = 0;

    // Called by a RefCountPtr to the interface.
    void increment() const noexcept { counted().increment(); }
    bool decrement() const noexcept { return counted().decrement(); }
    void destroy() const noexcept { counted().destroy(); }

  protected:
    ~ISeekableReadStreamView() = default;
};

} // namespace qncore
