#pragma once

#include <string>

namespace platform {

/// Where the system keeps shared memory objects as files.
inline constexpr const char* mutex_directory = "/dev/shm";

/// Name of the shared memory object of a named mutex, with its leading slash.
std::string mutex_object_name(const std::string& name);

} // namespace platform
