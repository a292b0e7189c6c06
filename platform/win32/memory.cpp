#include "platform/memory.h"

#include "platform/win32/windows.h"

namespace platform {

void secure_zero(void* memory, std::size_t size) noexcept {
    ::SecureZeroMemory(memory, size);
}

} // namespace platform
