#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "qnfile/directory_iterator_impl.h"
#include "qnfile/directory_sequence.h"

namespace qnfile::impl {

/// The hash of names and paths: 5 * h + byte over the signed bytes, never 0 but for no text.
std::uint32_t hash_of(std::string_view text) noexcept;

/// The path with `/` for every separator of the system.
std::string with_slashes(std::string path);

class DirectorySequenceImplWin32;
using DirectorySequencePtr = qncore::RefCountPtr<DirectorySequenceImplWin32>;

/// One directory of a walk. Directories that the walk has entered refer to the one above; nothing
/// refers downward but the object that the caller of a walk holds.
class DirectorySequenceImplWin32 final : public DirectorySequenceImpl {
  public:
    DirectorySequenceImplWin32(std::string basePath, PathPattern options,
                               DirectorySequencePtr parent = {});

    /// Opens the directory and goes down to the first match. Gives the sequence in which that lies
    /// when there is a parent, and the beginning of the walk when there is none. Null when there
    /// is no match, or 100 levels on the way to it do not suffice.
    static DirectorySequencePtr create_sequence(const std::string& basePath,
                                                const PathPattern& options,
                                                const DirectoryIteratorPtr& parentIterator,
                                                const DirectorySequencePtr& parentSequence,
                                                int depth, qncore::ErrorInfoPtr* error);

    /// Goes down into the directory that the iterator of this sequence stands on.
    DirectorySequencePtr enter(const DirectoryIteratorPtr& iterator, int depth,
                               qncore::ErrorInfoPtr* error);

    /// True when the entry that the iterator stands on is there to be entered, not delivered.
    bool must_enter(const DirectoryIteratorImplWin32& iterator) const noexcept {
        return options_.has_more_segments() || iterator.is_descend_only();
    }

    /// An iterator on the first accepted entry that no entry stands on: the one that is kept, or a
    /// new one; null when there is nothing accepted.
    DirectoryIteratorPtr first_iterator(qncore::ErrorInfoPtr* error);

    /// Keeps the iterator no longer, if it is the one that is kept.
    void release_first(const DirectoryIteratorPtr& iterator) noexcept;

    const PathPattern& options() const noexcept { return options_; }
    const DirectorySequencePtr& parent() const noexcept { return parent_; }
    /// Where the first match lies when not in this directory; else null.
    const DirectorySequencePtr& first_child() const noexcept { return first_child_; }

    std::uint32_t path_hash() const noexcept;

    friend bool operator==(const DirectorySequenceImplWin32& left,
                           const DirectorySequenceImplWin32& right) noexcept {
        return &left == &right ||
               (left.path_hash() == right.path_hash() && left.base_path() == right.base_path());
    }

  private:
    ~DirectorySequenceImplWin32() override = default;

    PathPattern options_;
    DirectoryIteratorPtr first_iterator_;
    DirectorySequencePtr first_child_;
    DirectorySequencePtr parent_;
    mutable std::uint32_t path_hash_ = 0; ///< 0 until computed
};

} // namespace qnfile::impl
