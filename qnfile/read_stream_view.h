#pragma once

#include "qncore/read_stream_view.h"
#include "qnfile/file_stream.h"

namespace qnfile {

/// A view of an open file. All views of a tree share one handle, but not its file pointer, and the
/// last of them closes the file. Different threads may read different views of a tree.
///
/// Seeks are clamped to the view. Required: the arithmetic is unsigned, so a target before the
/// first byte of the file wraps around and ends at the view's end. A root reads up to the length
/// that the file had at first, while its size() returns the present one, so that children can cover
/// what was appended. If the file has shrunk to the position or below, a read throws
/// error.qnfile.io.read.
class FileReadStreamView : public FileStreamBase, public qncore::ISeekableReadStreamView {
  public:
    /// Opens an existing file and returns the root view. Fails as FileReadStream::create does.
    static qncore::RefCountPtr<FileReadStreamView> create(const std::string& filename,
                                                          FileShareMode share, FileOpenFlags flags);
    static qncore::RefCountPtr<FileReadStreamView> create(const qnuri::UriReference& uri,
                                                          FileShareMode share, FileOpenFlags flags);

    const qncore::RefCounted<qncore::AtomicRefCount>& counted() const noexcept override {
        return *this;
    }
    using FileStreamBase::decrement;
    using FileStreamBase::destroy;
    using FileStreamBase::increment;
};

} // namespace qnfile
