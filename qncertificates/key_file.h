#pragma once

#include <cstddef>
#include <string>

#include "platform/file.h"
#include "qncrypto/key.h"

// One of the two files of a key pair. Internal to this room. Failures are ErrorExceptions that
// name the file, with the system's error nested. An open that another opener refuses is repeated
// for about a second.
namespace qncertificates {

/// No key file is larger. Of a larger one, one byte more than this is read.
inline constexpr std::size_t largest_key_file = 65536;

/// True if the file is certainly not there; throws if that cannot be told.
bool is_missing(const std::string& filename);

/// Reads the file to its end, shared with other readers.
qncrypto::Key read_key_file(const std::string& filename);

/// A key file that nobody else may write while this object lives. Creates a missing file for its
/// owner, and removes it again unless keep() is called. Throws if the file may not be both read
/// and written; nothing has changed then.
class KeyFileWriter {
  public:
    explicit KeyFileWriter(const std::string& filename);
    KeyFileWriter(const KeyFileWriter&) = delete;
    KeyFileWriter& operator=(const KeyFileWriter&) = delete;
    ~KeyFileWriter();

    /// Reads the file to its end.
    qncrypto::Key content() const;
    /// Replaces the content of the file and waits until it is on the device.
    void replace_content(const qncrypto::Key& content) const;
    void keep() noexcept { created_ = false; }

  private:
    const std::string filename_;
    bool created_;
    platform::FileHandle file_;
};

} // namespace qncertificates
