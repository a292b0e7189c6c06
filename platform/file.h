#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/system_error.h"

namespace platform {

/// The system's handle of an open file: a descriptor on Linux, a HANDLE on Windows.
using FileHandle = std::intptr_t;
inline constexpr FileHandle invalid_file = -1;

enum class FileAccess : std::uint8_t { read, write, read_write };

/// What other openers of the file may do while this one holds it.
enum class FileSharing : std::uint8_t { read_write, read, write, none };

enum class FileDisposition : std::uint8_t {
    create_new,        ///< fails when the file exists
    create_always,     ///< empties an existing file
    open_always,       ///< creates a missing file
    open_existing,     ///< fails when the file is missing
    truncate_existing, ///< fails when the file is missing, empties it
};

struct FileHints {
    bool sequential_scan = false;
    bool random_access = false;
    bool write_through = false; ///< a write returns when the bytes have reached the device
    bool overlapped = false;    ///< Windows only; ignored on Linux
};

enum class SeekMethod : std::uint8_t { begin, current, end };

/// Opens or creates a file. The name is UTF-8 on Windows and plain bytes on Linux, without an
/// embedded zero. The sharing is exclusive against every open made through this function, in this
/// process or another: whoever asks for what another opener denies, or denies what another
/// opener has, gets is_sharing_violation(), and the file keeps its content. On Linux the rule is
/// advisory, a flock() that a stranger holds counts as an opener that shares nothing, and where
/// the file system has no locks every open is allowed. Delete is always shared.
Result<FileHandle> open_file(const std::string& name, FileAccess access,
                             FileDisposition disposition, FileSharing sharing, FileHints hints);

/// Closes; never fails. An invalid_file is let be.
void close_file(FileHandle file) noexcept;

/// One transfer of at most `count` bytes at the file pointer; 0 read at the end of the file.
Result<std::uint32_t> read_file(FileHandle file, void* buffer, std::uint32_t count);
Result<std::uint32_t> write_file(FileHandle file, const void* buffer, std::uint32_t count);

/// The same at a position, independent of the file pointer. At or beyond the end a read of one
/// byte or more fails: ERROR_HANDLE_EOF on Windows, ENODATA on Linux.
Result<std::uint32_t> read_file_at(FileHandle file, std::uint64_t position, void* buffer,
                                   std::uint32_t count);

/// Moves the file pointer and gives its new place from the start; it may lie beyond the end.
Result<std::uint64_t> seek_file(FileHandle file, std::int64_t offset, SeekMethod method);

/// Length in bytes.
Result<std::uint64_t> file_size(FileHandle file);

/// Cuts or extends the file to where the file pointer stands.
SystemError set_end_of_file(FileHandle file);

/// Waits until what was written has reached the device.
SystemError flush_file(FileHandle file);

} // namespace platform
