#pragma once

#include <string>
#include <string_view>

namespace tool {

/// These throw UsageError, `subject` being what the user knows the text by.
///
/// The file holds server names and paths as they stand, in UTF-8 and without escapes, but for the
/// trusted path. So a text is refused that would break the file or read back as another one: a
/// control character, and `<` and `&`; in a server name also `"`, which ends it there, and a
/// blank at either end, with which nobody would find it.
void check_server_name(const std::string& subject, std::string_view name);
void check_path(const std::string& subject, std::string_view path);
void check_trusted_path(const std::string& subject, std::string_view path);

/// At most 245 bytes fit into one block of the machine's key (RFC 8017, section 7.2.1: 2048 bits
/// less 11 bytes).
void check_password(const std::string& subject, std::string_view password);
inline constexpr std::size_t longest_password = 245;

/// A name that is only looked for: not empty, and UTF-8.
void check_searched_name(const std::string& subject, std::string_view name);

/// The text on one line of a terminal: control characters become `\x1b` and the like.
std::string printable(std::string_view text);

/// The text with A to Z in lower case: names in the file are compared without regard to that.
std::string folded(std::string text);

} // namespace tool
