#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "qncore/error_info.h"
#include "qncore/ref_counted.h"
#include "qnuri/uri_reference.h"

namespace qnfile {

namespace impl {

/// What an entry has on every system.
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

/// Bits of DirectoryEntry::type(): a link has its bit beside that of a file or of a directory.
/// On Linux a symbolic link to a directory is a directory, any other one a file.
enum DirectoryEntryType : std::uint32_t { entry_file = 1, entry_directory = 2, entry_link = 4 };

/// Bits of DirectoryEntry::access(), by the attributes of the entry, not by what this process may
/// do. On Linux an entry is writable when any account has the permission, and hidden when its name
/// begins with a dot.
enum DirectoryEntryAccess : std::uint32_t {
    entry_access_read = 1, ///< always set
    entry_access_write = 2,
    entry_access_hidden = 4,
};

/// One entry of a directory: its name, where it lies, and what the system told about it when it
/// was reached; a link itself, not what it points at. Copies share one object. An empty entry
/// (false as a bool) has nothing of this to give.
class DirectoryEntry {
  public:
    DirectoryEntry() noexcept = default;
    explicit DirectoryEntry(qncore::RefCountPtr<impl::DirectoryEntryImpl> impl) noexcept
        : impl_(std::move(impl)) {}

    /// Looks at one path; a single separator at its end does not count. Reports
    /// error.qnfile.directory.notFound and gives an empty entry when the system does not know it.
    static DirectoryEntry create_from_full_path(const std::string& path,
                                                qncore::ErrorInfoPtr* error = nullptr);
    /// The same by the decoded path of a URI; on Windows without the `/` before a drive letter.
    static DirectoryEntry create_from_full_path(const qnuri::UriReference& uri,
                                                qncore::ErrorInfoPtr* error = nullptr);

    explicit operator bool() const noexcept { return static_cast<bool>(impl_); }

    /// UTF-8, or on Linux the bytes as they are, without a directory.
    const std::string& name() const noexcept { return impl_->name(); }
    /// The directory with `/` as separator, one at its end, too.
    const std::string& directory() const noexcept;
    std::string full_path() const;

    std::uint32_t type() const noexcept;
    bool is_file() const noexcept { return (type() & entry_file) != 0; }
    bool is_directory() const noexcept { return (type() & entry_directory) != 0; }
    bool is_link() const noexcept { return (type() & entry_link) != 0; }

    std::uint32_t access() const noexcept;
    bool is_readable() const noexcept { return (access() & entry_access_read) != 0; }
    bool is_writable() const noexcept { return (access() & entry_access_write) != 0; }
    bool is_hidden() const noexcept { return (access() & entry_access_hidden) != 0; }

    /// Bytes.
    std::uint64_t size() const noexcept;
    // Nanoseconds since 1970-01-01 UTC.
    std::int64_t accessed() const noexcept;
    std::int64_t modified() const noexcept;
    std::int64_t created() const noexcept;

    /// By name and directory.
    std::uint32_t hash_value() const noexcept;

    /// Entries are equal when name and directory are; empty ones equal each other.
    friend bool operator==(const DirectoryEntry& left, const DirectoryEntry& right) noexcept;
    /// By name within a directory, else by directory, bytewise; neither may be empty.
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
