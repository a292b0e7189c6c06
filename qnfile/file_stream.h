#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "qncore/ref_counted.h"
#include "qncore/streams.h"
#include "qnuri/uri_reference.h"

// Streams over files, without a buffer of their own: one read or write is one call of the system.
// A transfer is at most 2^32 - 1 bytes. Failures are ErrorExceptions below error.qnfile.io with
// the system's error nested; the stream stays usable. One thread at a time.
namespace qnfile {

/// What other openers may do. Deleting is always shared.
enum FileShareMode : std::uint32_t {
    share_read_write = 0,
    share_read = 1,
    share_write = 2,
    share_none = 3,
};

enum FileCreationDisposition : std::uint32_t {
    create_new = 0,        ///< the file must not exist
    create_always = 1,     ///< an existing file is emptied
    open_always = 2,       ///< a missing file is made
    open_existing = 3,     ///< the file must exist
    truncate_existing = 4, ///< the file must exist, and is emptied
};

/// A set of hints; unknown bits are ignored.
enum FileOpenFlags : std::uint32_t {
    flag_none = 0,
    flag_sequential_scan = 1,
    flag_random_access = 2,
    flag_write_through = 4, ///< a write returns when the bytes have reached the device
    flag_overlapped = 8,
};

/// An open file. It has no close operation: the last reference closes it.
class FileStreamBase : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    virtual platform::FileHandle handle() const = 0;
    /// The name as the creator passed it.
    virtual const std::string& filename() const = 0;
};

// The create functions open by a name in UTF-8 (on Linux any bytes) without an embedded zero;
// relative names are the system's business. Those with a reference (or a Uri) open the file that
// filename_from_uri gives for it, and throw error.qnfile.filename.uri when it names none.

class FileReadStream : public FileStreamBase, public qncore::ISeekableReadStream {
  public:
    static qncore::RefCountPtr<FileReadStream> create(const std::string& filename,
                                                      FileShareMode share, FileOpenFlags flags);
    static qncore::RefCountPtr<FileReadStream> create(const qnuri::UriReference& uri,
                                                      FileShareMode share, FileOpenFlags flags);
};

class FileWriteStream : public FileStreamBase,
                        public qncore::ISeekableWriteStream,
                        public qncore::IResizableStream {
  public:
    static qncore::RefCountPtr<FileWriteStream> create(const std::string& filename,
                                                       FileCreationDisposition disposition,
                                                       FileShareMode share, FileOpenFlags flags);
    static qncore::RefCountPtr<FileWriteStream> create(const qnuri::UriReference& uri,
                                                       FileCreationDisposition disposition,
                                                       FileShareMode share, FileOpenFlags flags);
};

class FileReadWriteStream : public FileStreamBase,
                            public qncore::ISeekableReadWriteStream,
                            public qncore::IResizableStream {
  public:
    static qncore::RefCountPtr<FileReadWriteStream> create(const std::string& filename,
                                                           FileCreationDisposition disposition,
                                                           FileShareMode share,
                                                           FileOpenFlags flags);
    static qncore::RefCountPtr<FileReadWriteStream> create(const qnuri::UriReference& uri,
                                                           FileCreationDisposition disposition,
                                                           FileShareMode share,
                                                           FileOpenFlags flags);
};

} // namespace qnfile
