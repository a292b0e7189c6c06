#pragma once

#include <algorithm>
#include <string_view>

namespace qnxml {

/// Blank, tab or newline. The tokenizer turns every line end into a newline.
constexpr bool is_white_space(char byte) noexcept {
    return byte == ' ' || byte == '\t' || byte == '\n';
}

/// True also for the empty text.
constexpr bool is_white_space(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char byte) { return is_white_space(byte); });
}

} // namespace qnxml
