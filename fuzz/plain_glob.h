#pragma once

#include <cstddef>
#include <string_view>

#include "qncore/utf8.h"

namespace fuzz {

inline std::size_t plain_step(std::string_view text) {
    const std::size_t length = qncore::utf8_sequence_length(text[0]);
    return length <= text.size() ? length : 0;
}

inline std::size_t plain_step(std::wstring_view text) {
    if (text[0] >= 0xD800 && text[0] <= 0xDBFF) {
        return text.size() > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFE ? 2 : 0;
    }
    return text[0] >= 0xDC00 && text[0] <= 0xDFFE ? 0 : 1;
}

/// The wildcard match in the words of its definition: every star tries every place. For short texts
/// only, since the time is exponential. The pattern is in lower case unless case counts.
template <class View>
bool plain_glob(View text, View pattern, bool caseSensitive, int depth = 0) {
    const auto folded = [&] {
        const auto unit = text[0];
        return !caseSensitive && unit >= 'A' && unit <= 'Z'
                   ? static_cast<typename View::value_type>(unit - 'A' + 'a')
                   : unit;
    };
    if (pattern.empty()) {
        return text.empty();
    }
    while (pattern[0] != '*') {
        if (text.empty()) {
            return false;
        }
        if (folded() == pattern[0]) {
            text.remove_prefix(1);
        } else if (pattern[0] == '?' && plain_step(text) != 0) {
            text.remove_prefix(plain_step(text));
        } else {
            return false;
        }
        pattern.remove_prefix(1);
        if (pattern.empty()) {
            return text.empty();
        }
    }
    while (!pattern.empty() && pattern[0] == '*') {
        pattern.remove_prefix(1);
    }
    if (pattern.empty()) {
        return true;
    }
    if (depth >= 32 || text.empty()) {
        return false;
    }
    while (!text.empty()) {
        if ((folded() == pattern[0] || pattern[0] == '?') &&
            plain_glob(text.substr(1), pattern.substr(1), caseSensitive, depth + 1)) {
            return true;
        }
        if (plain_step(text) == 0) {
            return false;
        }
        text.remove_prefix(plain_step(text));
    }
    return false;
}

} // namespace fuzz
