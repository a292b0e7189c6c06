#include "platform/memory.h"

#include <cstring>

namespace platform {

void secure_zero(void* memory, std::size_t size) noexcept {
    ::explicit_bzero(memory, size);
}

} // namespace platform
