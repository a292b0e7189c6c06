#pragma once

#include <string>

#include "platform/file.h"
#include "qncrypto/key.h"

// One of the two files of a key pair. Internal to this room. Failures are ErrorExceptions that
// name the file, with the system's error nested.
namespace qncertificates {

/// The whole content of a file of at most 64 KiB.
qncrypto::Key read_key_file(const std::string& filename);

/// A key file that is open for this object alone. Opening a missing one creates it for its owner;
/// opening one that may not be both read and written fails and changes nothing.
class KeyFileWriter {
  public:
    explicit KeyFileWriter(const std::string& filename);
    KeyFileWriter(const KeyFileWriter&) = delete;
    KeyFileWriter& operator=(const KeyFileWriter&) = delete;
    ~KeyFileWriter() { platform::close_file(file_); }

    /// Puts the bytes in place of the file's content, through to the device.
    void replace_content(const qncrypto::Key& content) const;

  private:
    const std::string& filename_;
    platform::FileHandle file_;
};

} // namespace qncertificates
