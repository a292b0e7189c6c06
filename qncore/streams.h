#pragma once

#include <cstdint>

// Byte streams. Counts and positions are in bytes. Every operation may throw ErrorException.
namespace qncore {

enum SeekOrigin : std::uint32_t { seek_begin = 0, seek_current = 1, seek_end = 2 };

class IReadStream {
  public:
    /// Reads up to `count` bytes. Returns the number read; 0 at the end.
    virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
    /// Skips up to `count` bytes. Returns the number skipped.
    virtual std::uint64_t skip(std::uint64_t count) = 0;
    /// Bytes left until the end.
    virtual std::uint64_t available() = 0;

  protected:
    ~IReadStream() = default;
};

class IWriteStream {
  public:
    /// Writes all `count` bytes and returns their number. A short write is an error.
    virtual std::uint64_t write(const void* buffer, std::uint64_t count) = 0;

  protected:
    ~IWriteStream() = default;
};

class IResizableStream {
  public:
    /// Current length.
    virtual std::uint64_t size() = 0;
    /// Truncates or extends to that length.
    virtual void resize(std::uint64_t bytes) = 0;

  protected:
    ~IResizableStream() = default;
};

class ISeekableStream {
  public:
    /// Moves the position. Returns the new position, counted from the start.
    virtual std::uint64_t seek(std::int64_t offset, SeekOrigin origin) = 0;

  protected:
    ~ISeekableStream() = default;
};

class ISeekableReadStream : public IReadStream, public ISeekableStream {
  protected:
    ~ISeekableReadStream() = default;
};

class ISeekableWriteStream : public IWriteStream, public ISeekableStream {
  protected:
    ~ISeekableWriteStream() = default;
};

class ISeekableReadWriteStream : public IReadStream, public IWriteStream, public ISeekableStream {
  protected:
    ~ISeekableReadWriteStream() = default;
};

} // namespace qncore
