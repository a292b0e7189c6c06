#include "platform/testing/testing.h"

#include <sys/mman.h>

#include "platform/posix/mutex_object.h"

namespace platform::testing {

void remove_named_mutex(const std::string& name) {
    ::shm_unlink(mutex_object_name(name).c_str());
}

} // namespace platform::testing
