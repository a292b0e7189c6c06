#pragma once

#include <string>

/// Two helpers for directories and files. Names are UTF-8 on Windows and any bytes on Linux.
class FileUtilities {
  public:
    FileUtilities() = delete;

    /// Creates one directory. Returns true if the directory exists afterwards.
    static bool create_directory(const std::string& directory);

    /// Returns false only if the file does not exist; true also if that cannot be determined.
    static bool located_file(const std::string& file);
};
