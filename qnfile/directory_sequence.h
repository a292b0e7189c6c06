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

/// A directory as its entries know it.
class DirectorySequenceImpl : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    explicit DirectorySequenceImpl(std::string basePath)
        : base_path_(std::move(basePath)) {}

    /// With `/` as separator, one at the end, too.
    const std::string& base_path() const noexcept { return base_path_; }

  protected:
    ~DirectorySequenceImpl() override = default;

  private:
    std::string base_path_;
};

} // namespace impl

/// The entries of a directory tree that match a path pattern (see path_pattern.h), as a container
/// that reads while it is walked. "." and ".." are entries like others, and so is what is hidden.
/// Each directory on the way down holds one handle of the system; memory does not grow with the
/// number of entries. A directory whose name begins with ".." or is "." is never entered by a `**`
/// walk; a link to a directory is, unless (Linux) it leads back to one that the walk is in.
///
/// Failures go to the slot `error`, or are thrown where it is null: error.qnfile.directory.notFound
/// for a directory that cannot be opened, error.qnfile.directory.iterator for one that cannot be
/// read on. One thread at a time.
class DirectorySequence {
  public:
    class DirectoryIterator;
    using iterator = DirectoryIterator;
    using const_iterator = DirectoryIterator;
    using value_type = DirectoryEntry;

    DirectorySequence() noexcept = default;
    /// Builds the walk and goes to the first match; empty on failure, and, without an error, when
    /// nothing matches or the first match lies more than 100 levels down. An empty path is "./";
    /// `\` counts as `/` in path and pattern on Windows.
    DirectorySequence(const char* path, std::size_t pathLength, const char* pattern,
                      std::size_t patternLength, bool caseSensitive,
                      qncore::ErrorInfoPtr* error = nullptr);
    /// All entries of one directory.
    DirectorySequence(const char* path, std::size_t pathLength,
                      qncore::ErrorInfoPtr* error = nullptr);

    /// As the constructors; what was held stays when they throw.
    void assign(const char* path, std::size_t pathLength, const char* pattern,
                std::size_t patternLength, bool caseSensitive,
                qncore::ErrorInfoPtr* error = nullptr);
    void assign(const char* path, std::size_t pathLength, qncore::ErrorInfoPtr* error = nullptr);

    explicit operator bool() const noexcept { return static_cast<bool>(impl_); }

    /// The first entry. Every call begins a walk of its own.
    DirectoryIterator begin(qncore::ErrorInfoPtr* error = nullptr) const;
    DirectoryIterator end() const noexcept;

    /// Reads anew from the start, with the same directory and pattern.
    void rewind(qncore::ErrorInfoPtr* error = nullptr);

  private:
    qncore::RefCountPtr<impl::DirectorySequenceImpl> impl_;
};

/// A position in a walk. Copies cost nothing and go on independently: the one that moves first
/// takes the system's handle along, the others find their place again by the name of their entry,
/// which is an error.qnfile.directory.iterator when that entry is gone.
class DirectorySequence::DirectoryIterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; ///< it gives values, not references
    using value_type = DirectoryEntry;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = DirectoryEntry;

    /// The end.
    DirectoryIterator() noexcept = default;
    /// The place of an entry; one from a full path goes on among its siblings.
    explicit DirectoryIterator(const DirectoryEntry& entry) noexcept
        : entry_(entry.impl_) {}

    DirectoryEntry operator*() const noexcept { return DirectoryEntry(entry_); }

    /// To the next entry or the end; moving the end is an error.qnfile.directory.iterator. A
    /// directory that cannot be entered is passed over when there is a slot. After a throw the next
    /// call goes on behind what failed.
    void increment(qncore::ErrorInfoPtr* error);
    DirectoryIterator& operator++();
    DirectoryIterator operator++(int);

    friend bool operator==(const DirectoryIterator& left, const DirectoryIterator& right) noexcept;

  private:
    qncore::RefCountPtr<impl::DirectoryEntryImpl> entry_;
};

} // namespace qnfile
