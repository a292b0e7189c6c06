#pragma once

#include <cstddef>

namespace platform {

/// Overwrites memory with zeros. The compiler does not optimise this away.
void secure_zero(void* memory, std::size_t size) noexcept;

} // namespace platform
