#pragma once

#include <cstdint>
#include <string>

#include "qnfile/directory_entry.h"
#include "qnfile/directory_sequence_impl.h"

namespace qnfile::impl {

class DirectoryEntryImplWin32;
using DirectoryEntryPtr = qncore::RefCountPtr<DirectoryEntryImplWin32>;

/// An entry and, until a copy takes it, the place in the walk from which the next step starts. The
/// entry changes only if a step succeeds; the place moves past what fails.
class DirectoryEntryImplWin32 final : public DirectoryEntryImpl {
  public:
    DirectoryEntryImplWin32(std::string name, DirectorySequencePtr sequence,
                            DirectoryIteratorPtr iterator);

    /// The first entry of a walk, or null.
    static DirectoryEntryPtr begin(const DirectorySequencePtr& walk, qncore::ErrorInfoPtr* error);

    /// The entry of one path, in a sequence without a walk.
    static DirectoryEntryPtr create_from_full_path(const std::string& path,
                                                   qncore::ErrorInfoPtr* error);

    /// Returns a copy that takes the place, for a holder that moves and is not the only one.
    DirectoryEntryPtr take_over();

    /// Becomes the next entry. Returns false at the end, and if the place cannot be found again,
    /// with the reason in `loss` unless `error` holds one. Only for the sole holder.
    bool advance(qncore::ErrorInfoPtr* error, qncore::ErrorInfoPtr& loss);

    const DirectorySequenceImplWin32& sequence() const noexcept { return *sequence_; }
    const platform::FileStatus& status() const noexcept { return status_; }
    std::uint32_t hash_value() const noexcept;

    friend bool operator==(const DirectoryEntryImplWin32& left,
                           const DirectoryEntryImplWin32& right) noexcept;

  private:
    ~DirectoryEntryImplWin32() override = default;

    bool step(qncore::ErrorInfoPtr* error, qncore::ErrorInfoPtr& loss);
    bool find_place(DirectorySequencePtr sequence, const std::string& name,
                    qncore::ErrorInfoPtr* error, qncore::ErrorInfoPtr& loss);
    void ascend(qncore::ErrorInfoPtr* error, qncore::ErrorInfoPtr& loss);
    void arrive();

    DirectorySequencePtr sequence_;       ///< of the entry
    mutable std::uint32_t name_hash_ = 0; ///< 0 until computed
    platform::FileStatus status_;
    DirectorySequencePtr place_;    ///< the directory that iterator_ reads
    DirectoryIteratorPtr iterator_; ///< null once the place has been taken
};

inline DirectoryEntryImplWin32&
system_side(const qncore::RefCountPtr<DirectoryEntryImpl>& entry) noexcept {
    return static_cast<DirectoryEntryImplWin32&>(*entry);
}

} // namespace qnfile::impl
