#include "qnfile/directory_iterator_impl.h"

#include "qnfile/errors.h"
#include "qnfile/report.h"

namespace qnfile::impl {
namespace {

using qncore::ErrorInfoPtr;

/// "." and "..". Required: only the first two characters are tested, so a name such as "..foo"
/// counts as well.
bool is_dotted(std::string_view name) noexcept {
    return name.starts_with('.') && (name.size() == 1 || name[1] == '.');
}

} // namespace

DirectoryIteratorImplWin32::DirectoryIteratorImplWin32(const std::string& basePath,
                                                       const PathPattern& options,
                                                       DirectoryIteratorPtr parent,
                                                       ErrorInfoPtr* error)
    : parent_(std::move(parent)) {
    const auto found = reader_.open(basePath, parent_ ? &parent_->reader_ : nullptr);
    if (!found) {
        report(
            error, error::qnfile_directory_notFound,
            "Failed to open directory entry reader. Base path=\"{@basePath}\"", "basePath",
            basePath + "*",
            QN_LOCATION("qnfile::impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()"),
            found.error());
    } else if (!*found) {
        close(error);
    } else if (!accept(options)) {
        advance(options, error);
    }
}

DirectoryIteratorImplWin32::~DirectoryIteratorImplWin32() = default;

DirectoryIteratorPtr DirectoryIteratorImplWin32::open(const std::string& basePath,
                                                      const PathPattern& options,
                                                      DirectoryIteratorPtr parent,
                                                      ErrorInfoPtr* error) {
    auto iterator = qncore::make_ref_counted<DirectoryIteratorImplWin32>(basePath, options,
                                                                         std::move(parent), error);
    return iterator->is_open() ? iterator : nullptr;
}

bool DirectoryIteratorImplWin32::advance(const PathPattern& options, ErrorInfoPtr* error) {
    if (!is_open()) {
        return false;
    }
    if (!descend_only_ && can_descend(options)) {
        descend_only_ = true;
        return true;
    }
    for (;;) {
        const auto found = reader_.next();
        if (!found) {
            const void* const handle = reader_.handle();
            ErrorInfoPtr dropped;
            close(&dropped);
            report(error, error::qnfile_directory_iterator,
                   "Failed to read next directory entry. Handle={@handle}", "handle", handle,
                   QN_LOCATION("qnfile::impl::DirectoryIteratorImplWin32::increment()"),
                   found.error());
            return false;
        }
        if (!*found) {
            close(error);
            return false;
        }
        if (accept(options)) {
            return true;
        }
    }
}

/// Tests the current entry.
bool DirectoryIteratorImplWin32::accept(const PathPattern& options) {
    descend_only_ = !options.matches(reader_.native_name());
    if (descend_only_) {
        return can_descend(options);
    }
    return !options.has_more_segments() || reader_.is_directory();
}

bool DirectoryIteratorImplWin32::can_descend(const PathPattern& options) const noexcept {
    return options.is_recursive() && reader_.is_directory() && !is_dotted(reader_.name());
}

void DirectoryIteratorImplWin32::close(ErrorInfoPtr* error) {
    const void* const handle = reader_.handle();
    if (const platform::SystemError failure = reader_.close()) {
        report(error, error::qnfile_directory_iterator,
               "Failed to close directory entry reader. Handle={@handle}", "handle", handle,
               QN_LOCATION("qnfile::impl::DirectoryIteratorImplWin32::close()"), failure);
    }
}

} // namespace qnfile::impl
