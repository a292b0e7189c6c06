#include "qnfile/directory_entry_impl.h"

#include <cerrno>
#include <utility>

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
    , place_(sequence_)
    , iterator_(std::move(iterator)) {}

DirectoryEntryPtr DirectoryEntryImplWin32::begin(const DirectorySequencePtr& walk,
                                                 ErrorInfoPtr* error) {
    auto start = walk->first_child() ? walk->first_child() : walk;
    auto iterator = start->first_iterator(error);
    // A second walk opens the directory anew, perhaps at one in which the first walk found nothing.
    while (iterator && start->must_enter(*iterator)) {
        if (auto child = start->enter(iterator, 0, error)) {
            start = std::move(child);
            iterator = start->first_iterator(error);
        } else if (!iterator->advance(start->options(), error)) {
            start->release_first(iterator);
            iterator.reset();
        }
    }
    if (!iterator) {
        return {};
    }
    auto entry = qncore::make_ref_counted<DirectoryEntryImplWin32>(std::string(), start, iterator);
    entry->arrive();
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
    copy->status_ = status_;
    copy->place_ = std::move(place_);
    return copy;
}

bool DirectoryEntryImplWin32::advance(ErrorInfoPtr* error, ErrorInfoPtr& loss) {
    if (!iterator_ && !find_place(sequence_, name_, error, loss)) {
        return false;
    }
    while (!step(error, loss)) {
        if (!iterator_) {
            return false;
        }
    }
    arrive();
    return true;
}

/// Moves the place to the next accepted entry, in this directory or one level down or up; false if
/// that is not to be delivered. Without an iterator at the end.
bool DirectoryEntryImplWin32::step(ErrorInfoPtr* error, ErrorInfoPtr& loss) {
    place_->release_first(iterator_);
    if (!iterator_->advance(place_->options(), error)) {
        ascend(error, loss);
        return false;
    }
    if (!place_->must_enter(*iterator_)) {
        return true;
    }
    auto child = place_->enter(iterator_, 0, error);
    if (!child) {
        return false;
    }
    place_ = std::move(child);
    iterator_ = place_->first_iterator(error);
    return true;
}

/// Opens the directory once more and looks for the name. Leaves no iterator if it is not found.
bool DirectoryEntryImplWin32::find_place(DirectorySequencePtr sequence, const std::string& name,
                                         ErrorInfoPtr* error, ErrorInfoPtr& loss) {
    place_ = std::move(sequence);
    iterator_ = place_->first_iterator(&loss);
    place_->release_first(iterator_);
    while (iterator_ && iterator_->name() != name) {
        if (!iterator_->advance(place_->options(), &loss)) {
            iterator_.reset();
        }
    }
    if (!iterator_ && !loss && !holds_error(error)) {
        report(&loss, error::qnfile_directory_iterator,
               "Could not restore iterator position after it had been copied. Current "
               "name={@name}",
               "name", name, QN_LOCATION("qnfile::impl::DirectoryEntryImplWin32::increment()"));
    }
    return static_cast<bool>(iterator_);
}

/// Moves the place to the entry of the directory above through which the walk came here. Leaves no
/// iterator at the top, or if that entry is gone.
void DirectoryEntryImplWin32::ascend(ErrorInfoPtr* error, ErrorInfoPtr& loss) {
    const DirectorySequencePtr below = std::exchange(place_, place_->parent());
    iterator_ = iterator_->parent();
    if (!place_ || iterator_) {
        return;
    }
    const std::string& path = below->base_path();
    const std::size_t start = place_->base_path().size();
    if (path.size() < start + 2) {
        qncore::throw_errno(QN_LOCATION("qnfile::impl::DirectoryEntryImplWin32::increment()"),
                            EINVAL);
    }
    if (find_place(place_, path.substr(start, path.size() - start - 1), error, loss) &&
        below->options().text().size() == place_->options().text().size()) {
        // With the same pattern as above, the directory would be entered once more.
        iterator_->set_descend_only();
    }
}

/// Becomes the entry at the place.
void DirectoryEntryImplWin32::arrive() {
    name_ = iterator_->name();
    name_hash_ = 0;
    status_ = iterator_->status();
    if (sequence_ != place_) {
        sequence_ = place_;
    }
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
