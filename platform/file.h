#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/system_error.h"

namespace platform {

/// The system's handle of an open file: a descriptor on Linux, a HANDLE on Windows.
using FileHandle = std::intptr_t;
inline constexpr FileHandle invalid_file = -1;

enum class FileAccess : std::uint8_t { read, write, read_write };

/// What other openers may do while the file is open.
enum class FileSharing : std::uint8_t { read_write, read, write, none };

enum class FileDisposition : std::uint8_t {
    create_new,        ///< fails if the file exists
    create_always,     ///< empties an existing file
    open_always,       ///< creates a missing file
    open_existing,     ///< fails if the file is missing
    truncate_existing, ///< empties an existing file; fails if it is missing
};

struct FileHints {
    bool sequential_scan = false;
    bool random_access = false;
    bool write_through = false; ///< a write returns after the bytes have reached the device
    /// Windows only: opens for asynchronous transfers, so read_file() and write_file() fail;
    /// read_file_at() waits for its transfer.
    bool overlapped = false;
};

enum class SeekMethod : std::uint8_t { begin, current, end };

/// Opens or creates a file. The name is UTF-8 on Windows and any bytes on Linux, without an
/// embedded zero. The share modes hold between all opens made through this function, in this
/// process and others: an open that asks for what another opener denies, or denies what another
/// opener has, fails with is_sharing_violation() and leaves the content unchanged. Deleting is
/// always shared.
///
/// On Linux share modes are advisory; another program's flock() counts, after half a second, as an
/// opener that shares nothing; devices and file systems without locks admit every opener; and only
/// regular files and character devices are opened, anything else (a FIFO, a socket, a directory)
/// is an error at once.
Result<FileHandle> open_file(const std::string& name, FileAccess access,
                             FileDisposition disposition, FileSharing sharing, FileHints hints);

/// Opens anything that can be read, including pipes, without share modes. May wait for the writer
/// of a named pipe.
Result<FileHandle> open_input(const std::string& name);

/// Closes a file; never fails. A no-op for invalid_file.
void close_file(FileHandle file) noexcept;

/// Reads at most `count` bytes at the file pointer in one call of the system. Returns 0 at the end
/// of the file.
Result<std::uint32_t> read_file(FileHandle file, void* buffer, std::uint32_t count);

/// Writes `count` bytes at the file pointer. Returns less only if the system fails after a part of
/// them (a full disk).
Result<std::uint32_t> write_file(FileHandle file, const void* buffer, std::uint32_t count);

/// Writes bytes of any number at the file pointer.
SystemError write_all(FileHandle file, std::string_view bytes);

/// Copies `source` from its file pointer to its end, to the file pointer of `target`.
SystemError copy_rest(FileHandle source, FileHandle target);

/// Reads at a position, independent of the file pointer. At or beyond the end a read of one byte or
/// more fails: ERROR_HANDLE_EOF on Windows, ENODATA on Linux.
Result<std::uint32_t> read_file_at(FileHandle file, std::uint64_t position, void* buffer,
                                   std::uint32_t count);

/// Moves the file pointer and returns its distance from the start; it may lie beyond the end.
Result<std::uint64_t> seek_file(FileHandle file, std::int64_t offset, SeekMethod method);

/// Returns the length in bytes.
Result<std::uint64_t> file_size(FileHandle file);

/// Cuts or extends the file at the file pointer.
SystemError set_end_of_file(FileHandle file);

/// Waits until all written data has reached the device.
SystemError flush_file(FileHandle file);

} // namespace platform
