#pragma once

#include <string>

namespace qncore {

namespace impl {

/// Throws error.qncore.embeddedNul.
[[noreturn]] void raise_embedded_nul_error();

} // namespace impl

/// Refuses a text that a system call would cut: throws when a zero stands inside it.
inline void check_no_embedded_nul(const std::string& text) {
    if (text.find('\0') != std::string::npos) {
        impl::raise_embedded_nul_error();
    }
}

} // namespace qncore
