#pragma once

#include <cstdint>
#include <string>

#include "qnfile/directory_entry.h"
#include "qnfile/directory_sequence_impl.h"

namespace qnfile::impl {

class DirectoryEntryImplWin32;
using DirectoryEntryPtr = qncore::RefCountPtr<DirectoryEntryImplWin32>;

/// An entry and, as long as no copy has taken it along, the iterator that stands on it.
class DirectoryEntryImplWin32 final : public DirectoryEntryImpl {
  public:
    DirectoryEntryImplWin32(std::string name, DirectorySequencePtr sequence,
                            DirectoryIteratorPtr iterator);

    /// The first entry of a walk, or null.
    static DirectoryEntryPtr begin(const DirectorySequencePtr& walk, qncore::ErrorInfoPtr* error);

    /// The entry of one path, in a sequence without a walk.
    static DirectoryEntryPtr create_from_full_path(const std::string& path,
                                                   qncore::ErrorInfoPtr* error);

    /// A copy that takes the iterator along, for whoever wants to move and is not alone.
    DirectoryEntryPtr take_over();

    /// Becomes the next entry; false at the end. To be called by the only holder.
    bool advance(qncore::ErrorInfoPtr* error);

    const DirectorySequenceImplWin32& sequence() const noexcept { return *sequence_; }
    const platform::FileStatus& status() const noexcept { return status_; }
    std::uint32_t hash_value() const noexcept;

    friend bool operator==(const DirectoryEntryImplWin32& left,
                           const DirectoryEntryImplWin32& right) noexcept;

  private:
    ~DirectoryEntryImplWin32() override = default;

    bool restore(qncore::ErrorInfoPtr* error);
    bool ascend();
    void take(const DirectoryIteratorImplWin32& iterator);

    DirectorySequencePtr sequence_;
    DirectoryIteratorPtr iterator_;
    bool has_entered_ = false; ///< when the place has been found again, it is behind the way down
    mutable std::uint32_t name_hash_ = 0; ///< 0 until computed
    platform::FileStatus status_;
};

} // namespace qnfile::impl
