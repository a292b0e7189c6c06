#pragma once

#include <filesystem>
#include <string>

namespace tool {

/// Converts a path (UTF-8 on Windows, bytes on Linux) to one of the standard library.
inline std::filesystem::path native_path(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

} // namespace tool
