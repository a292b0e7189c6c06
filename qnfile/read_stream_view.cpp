#include "qnfile/read_stream_view.h"

#include <algorithm>

#include "qncore/error_composer.h"
#include "qnfile/errors.h"
#include "qnfile/file_utilities.h"
#include "qnfile/read_stream_view_impl.h"

namespace qnfile {

using qncore::ErrorComposer;
using qncore::make_ref_counted;
using qncore::RefCountPtr;
using ViewPtr = RefCountPtr<qncore::ISeekableReadStreamView>;

RefCountPtr<FileReadStreamView>
FileReadStreamView::create(const std::string& filename, FileShareMode share, FileOpenFlags flags) {
    return make_ref_counted<impl::FileReadStreamViewImpl::RootView>(filename, share, flags);
}

RefCountPtr<FileReadStreamView> FileReadStreamView::create(const qnuri::UriReference& uri,
                                                           FileShareMode share,
                                                           FileOpenFlags flags) {
    return create(filename_from_uri(uri, nullptr), share, flags);
}

namespace impl {
namespace {

/// The bounds of a range, and how a failure reports them.
struct Bound {
    const char* message;
    const char* parameter;
    const char* function;
};

// Required: the single colons in the function names.
constexpr Bound file_bound = {
    "Invalid view range ({@offset},{@size}) for file \"{@filename}\" with size {@fileSize}.",
    "fileSize", "qnfile::impl::FileReadStreamViewImpl:ReadStreamViewImpl::ReadStreamViewImpl()"};
constexpr Bound root_bound = {
    "Invalid view range ({@offset},{@size}) for root view of \"{@filename}\" with view size "
    "{@rootViewSize}.",
    "rootViewSize", "qnfile::impl::FileReadStreamViewImpl:RootView::create_view()"};
constexpr Bound parent_bound = {
    "Invalid view range ({@offset},{@size}) for view of \"{@filename}\" with view size "
    "{@parentViewSize}.",
    "parentViewSize", "qnfile::impl::FileReadStreamViewImpl::create_view()"};

/// Required: a sum that overflows wraps around.
void check_range(std::uint64_t offset, std::uint64_t size, std::uint64_t limit,
                 const std::string& filename, const Bound& bound) {
    if (offset <= limit && offset + size <= limit) {
        return;
    }
    ErrorComposer(bound.message)
        .param("offset", offset)
        .param("size", size)
        .param("filename", filename)
        .param(bound.parameter, limit)
        .throw_error(error::qnfile_io_view_badRange, QN_LOCATION(bound.function));
}

} // namespace

FileReadView::FileReadView(FileImpl& sharedFile, std::uint64_t start, std::uint64_t length)
    : file(&sharedFile)
    , offset(start)
    , size(length)
    , position(start) {
    check_range(offset, size, file->size(), file->filename(), file_bound);
}

std::uint64_t FileReadView::read(void* buffer, std::uint64_t count) {
    const std::uint64_t got = file->read_at(position, buffer, std::min(available(), count));
    position += got;
    return got;
}

std::uint64_t FileReadView::skip(std::uint64_t count) noexcept {
    const std::uint64_t before = position;
    move_to(position + std::min(available(), count));
    return position - before;
}

std::uint64_t FileReadView::seek(std::int64_t distance, qncore::SeekOrigin origin) {
    std::uint64_t target = static_cast<std::uint64_t>(distance);
    switch (origin) {
    case qncore::seek_begin:
        target += offset;
        break;
    case qncore::seek_current:
        target += position;
        break;
    case qncore::seek_end:
        target += offset + size;
        break;
    default:
        ErrorComposer(
            "Invalid origin {@origin} in seek to offset {@offset} in file \"{@filename}\".")
            .param("origin", origin)
            .param("offset", distance)
            .param("filename", file->filename())
            .throw_error(error::qnfile_io_seek_badOrigin,
                         QN_LOCATION("qnfile::impl::FileReadViewFactoryImpl:FileReadView::seek()"));
    }
    move_to(target);
    return position - offset;
}

void FileReadView::move_to(std::uint64_t target) noexcept {
    position = std::max(std::min(target, offset + size), offset);
}

FileReadStreamViewImpl::FileReadStreamViewImpl(RefCountPtr<RootView> root, ViewPtr parent,
                                               std::uint64_t offset, std::uint64_t size)
    : root_(std::move(root))
    , parent_(std::move(parent))
    , view_(root_->file(), offset, size) {}

/// Releases the views above one by one: recursion would overflow the stack if the chain is long.
FileReadStreamViewImpl::~FileReadStreamViewImpl() {
    for (ViewPtr above = std::move(parent_); above && !above->counted().is_shared();) {
        auto* const view = dynamic_cast<FileReadStreamViewImpl*>(above.get());
        above = view != nullptr ? std::move(view->parent_) : ViewPtr();
    }
}

ViewPtr FileReadStreamViewImpl::root() {
    return root_;
}

ViewPtr FileReadStreamViewImpl::create_view(std::uint64_t offset, std::uint64_t size) {
    check_range(offset, size, view_.size, filename(), parent_bound);
    return make_ref_counted<FileReadStreamViewImpl>(root_, ViewPtr(this), view_.offset + offset,
                                                    size);
}

ViewPtr FileReadStreamViewImpl::RootView::create_view(std::uint64_t offset, std::uint64_t size) {
    check_range(offset, size, this->size(), filename(), root_bound);
    return make_ref_counted<FileReadStreamViewImpl>(RefCountPtr<RootView>(this), ViewPtr(this),
                                                    offset, size);
}

} // namespace impl
} // namespace qnfile
