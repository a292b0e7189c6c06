#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/directory.h"
#include "qncore/error_info.h"
#include "qncore/ref_counted.h"
#include "qnfile/path_pattern.h"

namespace qnfile::impl {

class DirectoryIteratorImplWin32;
using DirectoryIteratorPtr = qncore::RefCountPtr<DirectoryIteratorImplWin32>;

/// One open directory, positioned on an entry that the walk accepts: one to deliver, or one only to
/// enter on the way down. It has one position, so only one entry can use it.
class DirectoryIteratorImplWin32 final : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    /// Opens `basePath` and moves to the first accepted entry. If there is none, or on failure,
    /// is_open() is false. `parent` may be null, else it is positioned on this directory.
    DirectoryIteratorImplWin32(const std::string& basePath, const PathPattern& options,
                               DirectoryIteratorPtr parent, qncore::ErrorInfoPtr* error);

    /// The same; null if there is no accepted entry.
    static DirectoryIteratorPtr open(const std::string& basePath, const PathPattern& options,
                                     DirectoryIteratorPtr parent, qncore::ErrorInfoPtr* error);

    bool is_open() const noexcept { return reader_.is_open(); }

    /// Moves to the next accepted entry. Returns false, and closes, if there is none or reading
    /// fails. A directory that a recursive walk has delivered is returned once more, to be entered.
    bool advance(const PathPattern& options, qncore::ErrorInfoPtr* error);

    /// The entry is to be entered with the same pattern, and not delivered.
    bool is_descend_only() const noexcept { return descend_only_; }
    /// For an iterator that has found its place again and has already entered this directory.
    void set_descend_only() noexcept { descend_only_ = true; }

    std::string_view name() const noexcept { return reader_.name(); }
    bool is_link() const noexcept { return reader_.is_link(); }
    platform::FileStatus status() const { return reader_.status(); }
    /// The directory that is read.
    std::optional<platform::DirectoryIdentity> identity() const noexcept {
        return reader_.identity();
    }
    const DirectoryIteratorPtr& parent() const noexcept { return parent_; }

  private:
    ~DirectoryIteratorImplWin32() override;

    bool accept(const PathPattern& options);
    bool can_descend(const PathPattern& options) const noexcept;
    void close(qncore::ErrorInfoPtr* error);

    DirectoryIteratorPtr parent_;
    platform::DirectoryReader reader_;
    bool descend_only_ = false;
};

} // namespace qnfile::impl
