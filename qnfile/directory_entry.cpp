#include "qnfile/directory_entry.h"

#include <tuple>

#include "qnfile/directory_entry_impl.h"
#include "qnfile/path_forms.h"
#include "qnuri/percent_encoding.h"

namespace qnfile {

using impl::system_side;

DirectoryEntry DirectoryEntry::create_from_full_path(const std::string& path,
                                                     qncore::ErrorInfoPtr* error) {
    return DirectoryEntry(impl::DirectoryEntryImplWin32::create_from_full_path(path, error));
}

DirectoryEntry DirectoryEntry::create_from_full_path(const qnuri::UriReference& uri,
                                                     qncore::ErrorInfoPtr* error) {
    const std::string path = qnuri::percent_decode(uri.path().view());
    return create_from_full_path(impl::without_slash_before_drive(path), error);
}

const std::string& DirectoryEntry::directory() const noexcept {
    return system_side(impl_).sequence().base_path();
}

std::string DirectoryEntry::full_path() const {
    return directory() + name();
}

DirectoryEntryType DirectoryEntry::type() const noexcept {
    const platform::FileStatus& status = system_side(impl_).status();
    return (status.is_directory ? entry_directory : entry_file) |
           (status.is_link ? entry_link : entry_none);
}

DirectoryEntryAccess DirectoryEntry::access() const noexcept {
    const platform::FileStatus& status = system_side(impl_).status();
    return entry_access_read | (status.is_read_only ? entry_access_none : entry_access_write) |
           (status.is_hidden ? entry_access_hidden : entry_access_none);
}

std::uint64_t DirectoryEntry::size() const noexcept {
    return system_side(impl_).status().size;
}

std::int64_t DirectoryEntry::accessed() const noexcept {
    return system_side(impl_).status().accessed;
}

std::int64_t DirectoryEntry::modified() const noexcept {
    return system_side(impl_).status().modified;
}

std::int64_t DirectoryEntry::created() const noexcept {
    return system_side(impl_).status().created;
}

std::uint32_t DirectoryEntry::hash_value() const noexcept {
    return system_side(impl_).hash_value();
}

bool operator==(const DirectoryEntry& left, const DirectoryEntry& right) noexcept {
    if (!left || !right) {
        return !left && !right;
    }
    return system_side(left.impl_) == system_side(right.impl_);
}

std::strong_ordering operator<=>(const DirectoryEntry& left, const DirectoryEntry& right) noexcept {
    if (!left || !right) {
        return static_cast<bool>(left) <=> static_cast<bool>(right);
    }
    return std::tie(left.directory(), left.name()) <=> std::tie(right.directory(), right.name());
}

} // namespace qnfile
