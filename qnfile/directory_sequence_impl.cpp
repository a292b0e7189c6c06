#include "qnfile/directory_sequence_impl.h"

namespace qnfile::impl {
namespace {

/// Levels above the first match; deeper directories count as empty.
constexpr int depth_limit = 100;

} // namespace

std::uint32_t hash_of(std::string_view text) noexcept {
    std::uint32_t hash = 0;
    for (const char character : text) {
        hash = 5 * hash + static_cast<std::uint32_t>(static_cast<signed char>(character));
    }
    return hash != 0 ? hash : static_cast<std::uint32_t>(text.size());
}

DirectorySequenceImplWin32::DirectorySequenceImplWin32(std::string basePath, PathPattern options,
                                                       DirectorySequencePtr parent)
    : DirectorySequenceImpl(std::move(basePath))
    , options_(std::move(options))
    , parent_(std::move(parent)) {}

DirectorySequencePtr
DirectorySequenceImplWin32::create_sequence(const std::string& basePath, const PathPattern& options,
                                            const DirectoryIteratorPtr& parentIterator,
                                            const DirectorySequencePtr& parentSequence, int depth,
                                            qncore::ErrorInfoPtr* error) {
    const auto iterator =
        DirectoryIteratorImplWin32::open(basePath, options, parentIterator, error);
    if (!iterator || (parentIterator && parentIterator->is_link() &&
                      parentSequence->is_below(iterator->identity()))) {
        return {};
    }
    auto sequence =
        qncore::make_ref_counted<DirectorySequenceImplWin32>(basePath, options, parentSequence);
    if (sequence->must_enter(*iterator) && depth >= depth_limit) {
        return {};
    }
    while (sequence->must_enter(*iterator)) {
        if (auto child = sequence->enter(iterator, depth + 1, error)) {
            if (parentSequence) {
                return child;
            }
            // A separate object, since the child refers to `sequence`, which must not refer back.
            auto walk = qncore::make_ref_counted<DirectorySequenceImplWin32>(basePath, options);
            walk->first_child_ = std::move(child);
            return walk;
        }
        if (!iterator->advance(options, error)) {
            return {};
        }
    }
    sequence->first_iterator_ = iterator;
    return sequence;
}

/// Returns whether that directory is this one or one above it. The sequences know this, so that all
/// copies of an iterator answer alike.
bool DirectorySequenceImplWin32::is_below(
    const std::optional<platform::DirectoryIdentity>& directory) const noexcept {
    const DirectorySequenceImplWin32* above = this;
    while (above != nullptr && above->identity_ != directory) {
        above = above->parent_.get();
    }
    return directory && above != nullptr;
}

DirectorySequencePtr DirectorySequenceImplWin32::enter(const DirectoryIteratorPtr& iterator,
                                                       int depth, qncore::ErrorInfoPtr* error) {
    if (!identity_) {
        identity_ = iterator->identity();
    }
    std::string path;
    path.reserve(base_path().size() + iterator->name().size() + 1);
    path.append(base_path()).append(iterator->name()).append(1, '/');
    return create_sequence(path, iterator->is_descend_only() ? options_ : options_.next_segment(),
                           iterator, DirectorySequencePtr(this), depth, error);
}

DirectoryIteratorPtr DirectorySequenceImplWin32::first_iterator(qncore::ErrorInfoPtr* error) {
    if (!first_iterator_ || first_iterator_->is_shared()) {
        first_iterator_ = DirectoryIteratorImplWin32::open(base_path(), options_, {}, error);
    }
    return first_iterator_;
}

void DirectorySequenceImplWin32::release_first(const DirectoryIteratorPtr& iterator) noexcept {
    if (first_iterator_ == iterator) {
        first_iterator_.reset();
    }
}

std::uint32_t DirectorySequenceImplWin32::path_hash() const noexcept {
    if (path_hash_ == 0) {
        path_hash_ = hash_of(base_path());
    }
    return path_hash_;
}

} // namespace qnfile::impl
