#pragma once

#include <array>
#include <string>

#include <ace/OS_NS_Thread.h>

#include "platform/system_error.h"

namespace platform {

/// Where the system keeps shared memory objects as files.
inline constexpr const char* mutex_directory = "/dev/shm";

/// Name of the shared memory object of a named mutex, with its leading slash.
std::string mutex_object_name(const std::string& name);

/// What the shared memory object holds.
struct SharedMutex {
    std::array<char, 16> mark;
    ACE_mutex_t mutex;
};

/// Opens the object for reading and writing, and gives its descriptor. One of another size, which
/// can be no mutex of ours, is refused.
Result<int> open_mutex_object(const std::string& object);

/// Creates the object with an initialised mutex that every account may use. An object under its
/// own name is always whole, and no error when another process was first.
SystemError create_mutex_object(const std::string& object);

/// Maps an open object; one without the mark of a mutex of ours is refused.
Result<SharedMutex*> map_mutex_object(int descriptor);
void unmap_mutex_object(SharedMutex* shared) noexcept;

} // namespace platform
