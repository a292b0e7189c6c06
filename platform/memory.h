#pragma once

#include <cstddef>

namespace platform {

/// Overwrites memory with zeros in a way that the compiler does not drop.
void secure_zero(void* memory, std::size_t size) noexcept;

} // namespace platform
