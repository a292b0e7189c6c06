#pragma once

#include <string>

/// Two helpers for directories and files. Names are UTF-8 on Windows and any bytes on Linux.
class FileUtilities {
  public:
    FileUtilities() = delete;

    /// Creates one directory; true when it is there afterwards, made now or before.
    static bool create_directory(const std::string& directory);

    /// True when the file exists.
    static bool located_file(const std::string& file);
};
