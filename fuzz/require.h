#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// Ends the process, which is what a fuzzer takes for a finding, when the property does not hold.
inline void require(bool holds, const std::string& property) {
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", property.c_str());
        std::abort();
    }
}

} // namespace fuzz
