#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "qncore/ref_counted.h"
#include "qncore/streams.h"
#include "qnfile/flags.h"
#include "qnuri/uri_reference.h"

// Unbuffered streams over files: one read or write is one system call, which may transfer fewer
// bytes than requested; a read of 0 bytes means the end. A count of 2^32 or more throws
// error.qncore.safeCast and transfers nothing. Other failures throw ErrorExceptions below
// error.qnfile.io with the system's error nested; the stream stays usable. Not thread-safe.
namespace qnfile {

/// What other openers may do. Deletion is always shared. On Linux the share modes hold between
/// the users of this library only.
enum FileShareMode : std::uint32_t {
    share_read_write = 0,
    share_read = 1,
    share_write = 2,
    share_none = 3,
};

enum FileCreationDisposition : std::uint32_t {
    create_new = 0,        ///< the file must not exist
    create_always = 1,     ///< an existing file is truncated
    open_always = 2,       ///< a missing file is created
    open_existing = 3,     ///< the file must exist
    truncate_existing = 4, ///< the file must exist, and is truncated
};

/// Unknown flags are ignored.
enum FileOpenFlags : std::uint32_t {
    flag_none = 0,
    flag_sequential_scan = 1, ///< a hint
    flag_random_access = 2,   ///< a hint
    flag_write_through = 4,   ///< a write returns after the bytes have reached the device
    /// Windows only: opens for asynchronous transfers. Reads of views wait for the transfer; other
    /// reads and writes fail.
    flag_overlapped = 8,
};
template <>
inline constexpr bool is_flag_set<FileOpenFlags> = true;

/// An open file. There is no close operation: the last reference closes it.
class FileStreamBase : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    virtual platform::FileHandle handle() const = 0;
    /// The name as it was passed to create().
    virtual const std::string& filename() const = 0;
};

// Positions and lengths are in bytes. A seek may go beyond the end, where skip() moves by its whole
// count and available() wraps around (required). resize() keeps the position if that is below the
// new end, else sets it to the new end.
//
// create() opens by a name in UTF-8 (on Linux any bytes), relative to the current directory; a name
// with an embedded NUL throws error.qncore.embeddedNul. Failures are error.qnfile.io.open. By a
// reference (or a Uri) it opens the file that filename_from_uri returns for it, or throws
// error.qnfile.filename.uri.

/// Reads an existing file.
class FileReadStream : public FileStreamBase, public qncore::ISeekableReadStream {
  public:
    static qncore::RefCountPtr<FileReadStream> create(const std::string& filename,
                                                      FileShareMode share, FileOpenFlags flags);
    static qncore::RefCountPtr<FileReadStream> create(const qnuri::UriReference& uri,
                                                      FileShareMode share, FileOpenFlags flags);
};

/// Writes. A short write throws error.qnfile.io.write; what was written before it stays.
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

/// Reads and writes at one position.
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
