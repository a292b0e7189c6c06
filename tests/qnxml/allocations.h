#pragma once

#include <cstddef>

namespace qnxml_test {

/// How often this program has taken memory by `new` so far.
std::size_t allocations() noexcept;

} // namespace qnxml_test
