#include "qnfile/directory_entry_impl.h"

#include <cerrno>

#include "platform/path.h"
#include "qncore/system_name.h"
#include "qnfile/errors.h"
#include "qnfile/report.h"

namespace qnfile::impl {

using qncore::ErrorInfoPtr;

DirectoryEntryImplWin32::DirectoryEntryImplWin32(std::string name, DirectorySequencePtr sequence,
                                                 DirectoryIteratorPtr iterator)
    : DirectoryEntryImpl(std::move(name))
    , sequence_(std::move(sequence))
    , iterator_(std::move(iterator)) {}

DirectoryEntryPtr DirectoryEntryImplWin32::begin(const DirectorySequencePtr& walk,
                                                 ErrorInfoPtr* error) {
    const auto& start = walk->first_child() ? walk->first_child() : walk;
    auto iterator = start->first_iterator(error);
    if (!iterator) {
        return {};
    }
    auto entry = qncore::make_ref_counted<DirectoryEntryImplWin32>(std::string(), start, iterator);
    entry->take(*iterator);
    return entry;
}

DirectoryEntryPtr DirectoryEntryImplWin32::create_from_full_path(const std::string& path,
                                                                 ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    std::string name = path;
    if (!name.empty() && platform::is_separator(name.back())) {
        name.pop_back();
    }
    const auto status = platform::file_status(name);
    if (!status) {
        report(error, error::qnfile_directory_notFound,
               "Failed to get directory entry stats. Full path=\"{@fullPath}\"", "fullPath", name,
               QN_LOCATION("qnfile::impl::DirectoryEntryImplWin32::create_from_full_path()"),
               status.error());
        return {};
    }
    name = with_slashes(std::move(name));
    const std::size_t start = name.rfind('/') + 1;
    auto sequence = qncore::make_ref_counted<DirectorySequenceImplWin32>(
        start != 0 ? name.substr(0, start) : "./", PathPattern());
    auto entry = qncore::make_ref_counted<DirectoryEntryImplWin32>(
        name.substr(start), std::move(sequence), DirectoryIteratorPtr());
    entry->status_ = *status;
    return entry;
}

DirectoryEntryPtr DirectoryEntryImplWin32::take_over() {
    auto copy =
        qncore::make_ref_counted<DirectoryEntryImplWin32>(name_, sequence_, std::move(iterator_));
    copy->has_entered_ = has_entered_;
    copy->status_ = status_;
    return copy;
}

bool DirectoryEntryImplWin32::advance(ErrorInfoPtr* error) {
    for (;;) {
        if (!iterator_ && !restore(error)) {
            if (!holds_error(error)) {
                report(error, error::qnfile_directory_iterator,
                       "Could not restore iterator position after it had been copied. Current "
                       "name={@name}",
                       "name", name_,
                       QN_LOCATION("qnfile::impl::DirectoryEntryImplWin32::increment()"));
            }
            return false;
        }
        sequence_->release_first(iterator_);
        if (!iterator_->advance(sequence_->options(), error)) {
            if (!ascend()) {
                return false;
            }
        } else if (!sequence_->must_enter(*iterator_)) {
            take(*iterator_);
            return true;
        } else if (auto child = sequence_->enter(iterator_, 0, error)) {
            sequence_ = std::move(child);
            iterator_ = sequence_->first_iterator(error);
            take(*iterator_);
            return true;
        }
    }
}

/// Looks for the place by name, in a new iterator.
bool DirectoryEntryImplWin32::restore(ErrorInfoPtr* error) {
    auto iterator = sequence_->first_iterator(error);
    sequence_->release_first(iterator);
    while (iterator && iterator->name() != name_) {
        if (!iterator->advance(sequence_->options(), error)) {
            iterator.reset();
        }
    }
    if (iterator && has_entered_) {
        iterator->set_descend_only();
    }
    has_entered_ = false;
    iterator_ = std::move(iterator);
    return static_cast<bool>(iterator_);
}

/// Goes to the entry of the directory above through which the walk came here; false at the top.
bool DirectoryEntryImplWin32::ascend() {
    const DirectorySequencePtr parent = sequence_->parent();
    if (!parent) {
        return false;
    }
    iterator_ = iterator_->parent();
    if (!iterator_) {
        const std::string& path = sequence_->base_path();
        const std::size_t start = parent->base_path().size();
        if (path.size() < start + 2) {
            qncore::throw_errno(QN_LOCATION("qnfile::impl::DirectoryEntryImplWin32::increment()"),
                                EINVAL);
        }
        name_ = path.substr(start, path.size() - start - 1);
        // The way down keeps the pattern, a further segment is shorter. Without this the directory
        // would be entered again.
        has_entered_ = sequence_->options().text().size() == parent->options().text().size();
    }
    sequence_ = parent;
    return true;
}

void DirectoryEntryImplWin32::take(const DirectoryIteratorImplWin32& iterator) {
    name_ = iterator.name();
    name_hash_ = 0;
    status_ = iterator.status();
}

std::uint32_t DirectoryEntryImplWin32::hash_value() const noexcept {
    if (name_hash_ == 0) {
        name_hash_ = hash_of(name_);
    }
    const std::uint32_t hash = name_hash_ ^ sequence_->path_hash();
    return hash != 0 ? hash
                     : static_cast<std::uint32_t>(name_.size() + sequence_->base_path().size());
}

bool operator==(const DirectoryEntryImplWin32& left,
                const DirectoryEntryImplWin32& right) noexcept {
    return &left == &right || (left.name() == right.name() && left.sequence() == right.sequence());
}

} // namespace qnfile::impl
