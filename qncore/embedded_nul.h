#pragma once

#include <string>

namespace qncore {

namespace impl {

/// Throws error.qncore.embeddedNul.
[[noreturn]] void raise_embedded_nul_error();

} // namespace impl

/// Throws error.qncore.embeddedNul if the text contains a zero character, at which a system call
/// would cut it.
inline void check_no_embedded_nul(const std::string& text) {
    if (text.find('\0') != std::string::npos) {
        impl::raise_embedded_nul_error();
    }
}

} // namespace qncore
