#pragma once

#include <cstddef>
#include <string>

#include "platform/file.h"
#include "qncrypto/key.h"

// One of the two files of a key pair. Internal to this room. Failures are ErrorExceptions that
// name the file, with the system's error nested. An open that fails with a sharing violation is
// repeated for about a second.
namespace qncertificates {

/// Largest size of a key file in bytes. Of a larger file one byte more than this is read.
inline constexpr std::size_t largest_key_file = 65536;

/// True if the file does not exist. Throws if that cannot be determined.
bool is_missing(const std::string& filename);

/// Reads the file to its end, shared with other readers.
qncrypto::Key read_key_file(const std::string& filename);

/// A key file that no other opener may write while this object lives. Creates a missing file, which
/// the destructor removes unless keep() was called. Throws, and changes nothing, if the file cannot
/// be opened for reading and writing.
class KeyFileWriter {
  public:
    explicit KeyFileWriter(const std::string& filename);
    KeyFileWriter(const KeyFileWriter&) = delete;
    KeyFileWriter& operator=(const KeyFileWriter&) = delete;
    ~KeyFileWriter();

    /// Reads the file to its end.
    qncrypto::Key content() const;
    /// Replaces the content of the file and flushes it to the device.
    void replace_content(const qncrypto::Key& content) const;
    void keep() noexcept { created_ = false; }

  private:
    const std::string filename_;
    bool created_;
    platform::FileHandle file_;
};

} // namespace qncertificates
