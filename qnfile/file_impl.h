#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "qncore/streams.h"
#include "qnfile/file_stream.h"

namespace qnfile::impl {

enum FileAccessMode : std::uint32_t { access_read = 0, access_write = 1, access_read_write = 2 };

/// An open file as all streams use it: turns the layer's enumerations into the system's, owns the
/// handle, and has one call of the system behind each operation.
class FileImpl {
  public:
    FileImpl(const std::string& filename, FileAccessMode access,
             FileCreationDisposition disposition, FileShareMode share, FileOpenFlags flags);
    FileImpl(const FileImpl&) = delete;
    FileImpl& operator=(const FileImpl&) = delete;
    ~FileImpl();

    const std::string& filename() const noexcept { return filename_; }
    platform::FileHandle handle() const noexcept { return handle_; }

    /// Bytes transferred, which may be fewer than asked for. A count beyond 32 bits throws.
    std::uint64_t read(void* buffer, std::uint64_t count);
    /// The same at a position from the start, whatever the file pointer; at or beyond the end a
    /// read of one byte or more fails.
    std::uint64_t read_at(std::uint64_t position, void* buffer, std::uint64_t count);
    std::uint64_t write(const void* buffer, std::uint64_t count);

    /// The new position from the start. Beyond the end is allowed.
    std::uint64_t seek(std::int64_t offset, qncore::SeekOrigin origin);
    std::uint64_t size();

    /// Keeps the position when that lies before the new end, else leaves it there.
    void resize(std::uint64_t bytes);

    /// Passes over at most `count` bytes up to the end. From beyond the end it goes `count` bytes
    /// further.
    std::uint64_t skip(std::uint64_t count);

    /// Bytes up to the end; beyond it the difference wraps around.
    std::uint64_t available();

    /// Writes all or throws; what was written before a short write stays.
    std::uint64_t write_all(const void* buffer, std::uint64_t count);

  private:
    std::string filename_;
    platform::FileHandle handle_ = platform::invalid_file;
};

} // namespace qnfile::impl
