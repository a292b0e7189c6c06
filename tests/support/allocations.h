#pragma once

#include <cstddef>
#include <functional>

// Watches every `new` and `delete` of a test program that links orva_allocation_watch.
namespace support {

/// Returns how often this program has called `new` so far.
std::size_t allocations() noexcept;

enum class Failing { once, from_there_on };

/// Makes the `number`-th `new` from now on, or that and all later ones, fail.
void fail_allocations(std::size_t number, Failing which) noexcept;

/// Runs the action with its `number`-th `new` (from 1 on), or that and all later ones, failing;
/// returns false if there are fewer.
bool with_failing_allocation(std::size_t number, Failing which,
                             const std::function<void()>& action);

/// Returns how many blocks that still contain the secret the action frees.
int blocks_given_back_with(const void* secret, std::size_t size,
                           const std::function<void()>& action);

} // namespace support
