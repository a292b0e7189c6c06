#pragma once

#include <filesystem>
#include <string>

namespace tool {

/// A path of ours (UTF-8 on Windows, bytes on Linux) as the standard library takes it.
inline std::filesystem::path native_path(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

} // namespace tool
