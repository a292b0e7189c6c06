#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "qnfile/directory_iterator_impl.h"
#include "qnfile/directory_sequence.h"

namespace qnfile::impl {

/// The hash of names and paths: 5 * h + byte over the signed bytes; 0 only for an empty text.
std::uint32_t hash_of(std::string_view text) noexcept;

class DirectorySequenceImplWin32;
using DirectorySequencePtr = qncore::RefCountPtr<DirectorySequenceImplWin32>;

/// One directory of a walk. A directory that the walk has entered refers to the one above; only the
/// object that the caller holds refers downward.
class DirectorySequenceImplWin32 final : public DirectorySequenceImpl {
  public:
    DirectorySequenceImplWin32(std::string basePath, PathPattern options,
                               DirectorySequencePtr parent = {});

    /// Opens the directory and descends to the first match. Returns the sequence that holds the
    /// match if there is a parent, else the beginning of the walk. Returns null if there is no
    /// match, if it is more than 100 levels down, or if a link leads back to a directory above.
    static DirectorySequencePtr create_sequence(const std::string& basePath,
                                                const PathPattern& options,
                                                const DirectoryIteratorPtr& parentIterator,
                                                const DirectorySequencePtr& parentSequence,
                                                int depth, qncore::ErrorInfoPtr* error);

    /// Descends into the directory on which the iterator of this sequence is positioned.
    DirectorySequencePtr enter(const DirectoryIteratorPtr& iterator, int depth,
                               qncore::ErrorInfoPtr* error);

    /// True if the iterator's entry is to be entered, not delivered.
    bool must_enter(const DirectoryIteratorImplWin32& iterator) const noexcept {
        return options_.has_more_segments() || iterator.is_descend_only();
    }

    /// Returns an iterator on the first accepted entry that no entry uses yet: the one that is
    /// kept, or a new one. Null if there is no accepted entry.
    DirectoryIteratorPtr first_iterator(qncore::ErrorInfoPtr* error);

    /// Drops the iterator if it is the one that is kept.
    void release_first(const DirectoryIteratorPtr& iterator) noexcept;

    const PathPattern& options() const noexcept { return options_; }
    const DirectorySequencePtr& parent() const noexcept { return parent_; }
    /// The sequence of the first match if that is not in this directory, else null.
    const DirectorySequencePtr& first_child() const noexcept { return first_child_; }

    std::uint32_t path_hash() const noexcept;

    friend bool operator==(const DirectorySequenceImplWin32& left,
                           const DirectorySequenceImplWin32& right) noexcept {
        return &left == &right ||
               (left.path_hash() == right.path_hash() && left.base_path() == right.base_path());
    }

  private:
    ~DirectorySequenceImplWin32() override = default;

    bool is_below(const std::optional<platform::DirectoryIdentity>& directory) const noexcept;

    PathPattern options_;
    DirectoryIteratorPtr first_iterator_;
    DirectorySequencePtr first_child_;
    DirectorySequencePtr parent_;
    std::optional<platform::DirectoryIdentity> identity_; ///< known once the walk goes below
    mutable std::uint32_t path_hash_ = 0;                 ///< 0 until computed
};

} // namespace qnfile::impl
