#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "qncore/error_info.h"
#include "qncore/ref_counted.h"
#include "qnfile/flags.h"
#include "qnuri/uri_reference.h"

namespace qnfile {

namespace impl {

/// The part of an entry that does not depend on the system.
class DirectoryEntryImpl : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    explicit DirectoryEntryImpl(std::string name)
        : name_(std::move(name)) {}

    const std::string& name() const noexcept { return name_; }

  protected:
    ~DirectoryEntryImpl() override = default;

    std::string name_;
};

} // namespace impl

/// DirectoryEntry::type(): a link has its bit beside that of a file or a directory. On Linux a
/// symbolic link to a directory is a directory, any other one a file.
enum DirectoryEntryType : std::uint32_t {
    entry_none = 0,
    entry_file = 1,
    entry_directory = 2,
    entry_link = 4,
};
template <>
inline constexpr bool is_flag_set<DirectoryEntryType> = true;

/// DirectoryEntry::access(), by the attributes of the entry, not by the rights of this process. On
/// Linux an entry is writable if any account has the permission, and hidden if its name begins
/// with a dot.
enum DirectoryEntryAccess : std::uint32_t {
    entry_access_none = 0,
    entry_access_read = 1, ///< always set
    entry_access_write = 2,
    entry_access_hidden = 4,
};
template <>
inline constexpr bool is_flag_set<DirectoryEntryAccess> = true;

/// One entry of a directory: its name, its directory, and what the system reported when the entry
/// was reached; for a link, about the link itself. Copies share one object, which is not
/// synchronised: use entry and copies in one thread at a time. An empty entry (false as a bool) has
/// no properties: only copying, ==, and the bool are allowed.
class DirectoryEntry {
  public:
    DirectoryEntry() noexcept = default;
    explicit DirectoryEntry(qncore::RefCountPtr<impl::DirectoryEntryImpl> impl) noexcept
        : impl_(std::move(impl)) {}

    /// Returns the entry of a path; a single separator at its end is ignored. Reports
    /// error.qnfile.directory.notFound and returns an empty entry if its status cannot be read. A
    /// path with an embedded NUL throws error.qncore.embeddedNul.
    static DirectoryEntry create_from_full_path(const std::string& path,
                                                qncore::ErrorInfoPtr* error = nullptr);
    /// The same by the decoded path of a URI; on Windows without the `/` before a drive letter.
    static DirectoryEntry create_from_full_path(const qnuri::UriReference& uri,
                                                qncore::ErrorInfoPtr* error = nullptr);

    explicit operator bool() const noexcept { return static_cast<bool>(impl_); }

    /// Without a directory; UTF-8, on Linux any bytes.
    const std::string& name() const noexcept { return impl_->name(); }
    /// With `/` as separator, also at the end.
    const std::string& directory() const noexcept;
    std::string full_path() const;

    DirectoryEntryType type() const noexcept;
    bool is_file() const noexcept { return (type() & entry_file) != 0; }
    bool is_directory() const noexcept { return (type() & entry_directory) != 0; }
    bool is_link() const noexcept { return (type() & entry_link) != 0; }

    DirectoryEntryAccess access() const noexcept;
    bool is_hidden() const noexcept { return (access() & entry_access_hidden) != 0; }

    /// In bytes.
    std::uint64_t size() const noexcept;
    /// Nanoseconds since 1970-01-01 UTC; years after 2262 wrap around.
    std::int64_t accessed() const noexcept;
    std::int64_t modified() const noexcept;
    /// On Linux, where the file system keeps no time of birth, the older one of the last changes of
    /// content and status.
    std::int64_t created() const noexcept;

    /// Of name and directory; computed once and kept.
    std::uint32_t hash_value() const noexcept;

    /// Entries are equal if name and directory are; empty ones equal each other.
    friend bool operator==(const DirectoryEntry& left, const DirectoryEntry& right) noexcept;
    /// By directory, then by name, bytewise. An empty entry comes first.
    friend std::strong_ordering operator<=>(const DirectoryEntry& left,
                                            const DirectoryEntry& right) noexcept;

  private:
    friend class DirectorySequence; // and its iterator

    qncore::RefCountPtr<impl::DirectoryEntryImpl> impl_;
};

} // namespace qnfile

template <>
struct std::hash<qnfile::DirectoryEntry> {
    std::size_t operator()(const qnfile::DirectoryEntry& entry) const noexcept {
        return entry.hash_value();
    }
};
