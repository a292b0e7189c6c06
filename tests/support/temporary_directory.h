#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

/// A new directory, removed with its content by the destructor.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    const std::filesystem::path& path() const noexcept { return path_; }
    std::string str() const { return path_.string(); }
    /// The path of a name inside it, with the system's own separators.
    std::string file(std::string_view name) const;

  private:
    std::filesystem::path path_;
};

/// Removes a file or a directory with its content, read-only or not.
void remove_all(const std::filesystem::path& path);

/// The path of a name in UTF-8 (on Linux any bytes).
std::filesystem::path native(const std::string& name);

/// Returns the content of a file; fails the test if it cannot be read.
std::string read_file(const std::string& name);

/// Creates or replaces a file.
void write_file(const std::string& name, std::string_view content);

} // namespace support
