#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "qncore/streams.h"
#include "qnfile/file_stream.h"

namespace qnfile::impl {

enum FileAccessMode : std::uint32_t { access_read = 0, access_write = 1, access_read_write = 2 };

/// The open file of every stream: maps this layer's enumerations to the platform's, owns the
/// handle, and makes one system call for each operation.
class FileImpl {
  public:
    FileImpl(const std::string& filename, FileAccessMode access,
             FileCreationDisposition disposition, FileShareMode share, FileOpenFlags flags);
    FileImpl(const FileImpl&) = delete;
    FileImpl& operator=(const FileImpl&) = delete;
    ~FileImpl();

    const std::string& filename() const noexcept { return filename_; }
    platform::FileHandle handle() const noexcept { return handle_; }

    /// Returns the bytes read, which may be fewer than requested. A count of 2^32 or more throws.
    std::uint64_t read(void* buffer, std::uint64_t count);
    /// Reads at a position, counted from the start, without the file pointer. At or beyond the end
    /// a read of one byte or more fails.
    std::uint64_t read_at(std::uint64_t position, void* buffer, std::uint64_t count);
    std::uint64_t write(const void* buffer, std::uint64_t count);

    /// Returns the new position from the start, which may lie beyond the end.
    std::uint64_t seek(std::int64_t offset, qncore::SeekOrigin origin);
    std::uint64_t size();

    /// Keeps the position if that is below the new end, else leaves it there.
    void resize(std::uint64_t bytes);

    /// Skips at most `count` bytes up to the end; from beyond the end, all `count` bytes.
    std::uint64_t skip(std::uint64_t count);

    /// Bytes left until the end; beyond it the difference wraps around.
    std::uint64_t available();

    /// Writes all or throws. What a short write has written stays.
    std::uint64_t write_all(const void* buffer, std::uint64_t count);

  private:
    std::string filename_;
    platform::FileHandle handle_ = platform::invalid_file;
};

} // namespace qnfile::impl
