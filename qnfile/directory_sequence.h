#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

#include "qncore/error_info.h"
#include "qncore/ref_counted.h"
#include "qnfile/directory_entry.h"

namespace qnfile {

namespace impl {

/// The directory of an entry.
class DirectorySequenceImpl : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    explicit DirectorySequenceImpl(std::string basePath)
        : base_path_(std::move(basePath)) {}

    /// With `/` as separator, also at the end.
    const std::string& base_path() const noexcept { return base_path_; }

  protected:
    ~DirectorySequenceImpl() override = default;

  private:
    std::string base_path_;
};

} // namespace impl

/// The entries of a directory tree that match a path pattern (see path_pattern.h), as a container
/// that is read while it is walked. "." and ".." are entries like any other, as are hidden files;
/// a pattern such as `*/x` enters them, too. A `**` walk does not enter directories named "." or
/// with a name that begins with ".."; it does enter links to directories, except on Linux a link
/// that leads back to a directory above it. Each directory on the way down holds one system handle;
/// memory does not grow with the number of entries.
///
/// Failures go to the slot `error`, or are thrown if it is null: error.qnfile.directory.notFound
/// for a directory that cannot be opened, error.qnfile.directory.iterator for one that cannot be
/// read to its end. A path with an embedded NUL, and on Windows invalid UTF-8, throws despite a
/// slot. Not thread-safe.
class DirectorySequence {
  public:
    class DirectoryIterator;
    using iterator = DirectoryIterator;
    using const_iterator = DirectoryIterator;
    using value_type = DirectoryEntry;

    DirectorySequence() noexcept = default;
    /// Opens the directory and descends to the first match. The sequence is empty on failure, and,
    /// without an error, if nothing matches or the first match is more than 100 levels down. An
    /// empty path is "./"; on Windows `\` is also a separator in path and pattern.
    DirectorySequence(const char* path, std::size_t pathLength, const char* pattern,
                      std::size_t patternLength, bool caseSensitive,
                      qncore::ErrorInfoPtr* error = nullptr);
    /// All entries of one directory.
    DirectorySequence(const char* path, std::size_t pathLength,
                      qncore::ErrorInfoPtr* error = nullptr);

    /// Like the constructors; the sequence is unchanged if they throw.
    void assign(const char* path, std::size_t pathLength, const char* pattern,
                std::size_t patternLength, bool caseSensitive,
                qncore::ErrorInfoPtr* error = nullptr);
    void assign(const char* path, std::size_t pathLength, qncore::ErrorInfoPtr* error = nullptr);

    explicit operator bool() const noexcept { return static_cast<bool>(impl_); }

    /// Returns the first entry. Every call begins a separate walk.
    DirectoryIterator begin(qncore::ErrorInfoPtr* error = nullptr) const;
    DirectoryIterator end() const noexcept;

    /// Reads from the start again, with the same directory and pattern; a no-op if empty.
    void rewind(qncore::ErrorInfoPtr* error = nullptr);

  private:
    qncore::RefCountPtr<impl::DirectorySequenceImpl> impl_;
};

/// A position in a walk. Copies are cheap and independent: the one that moves first takes the
/// system's handle, the others find their place again by the name of their entry. If that entry has
/// been removed, they report error.qnfile.directory.iterator and are at the end.
class DirectorySequence::DirectoryIterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; ///< it returns values, not references
    using value_type = DirectoryEntry;
    using difference_type = std::ptrdiff_t;
    using pointer = const DirectoryEntry*;
    using reference = DirectoryEntry;

    /// The end.
    DirectoryIterator() noexcept = default;
    /// The place of an entry. After one from a full path, its siblings follow.
    explicit DirectoryIterator(DirectoryEntry entry) noexcept
        : entry_(std::move(entry)) {}

    DirectoryEntry operator*() const noexcept { return entry_; }
    /// Valid until the iterator moves.
    const DirectoryEntry* operator->() const noexcept { return &entry_; }

    /// Moves to the next entry or to the end. With a slot, a directory that cannot be entered or
    /// read is reported and skipped. Without one the failure is thrown and the iterator stays on
    /// its entry; the next step continues after what failed. Moving the end reports
    /// error.qnfile.directory.iterator.
    void increment(qncore::ErrorInfoPtr* error);
    /// Call increment(nullptr).
    DirectoryIterator& operator++();
    DirectoryIterator operator++(int);

    friend bool operator==(const DirectoryIterator& left,
                           const DirectoryIterator& right) noexcept = default;

  private:
    DirectoryEntry entry_; ///< empty at the end
};

} // namespace qnfile
