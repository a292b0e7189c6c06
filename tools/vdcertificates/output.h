#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/vdcertificates/entry.h"

namespace tool {

enum class Format : std::uint8_t { text, json };

struct OutputStyle {
    Format format = Format::text;
    bool passwords = false; ///< in clear
};

/// A name and its value, one line of output.
using Line = std::pair<std::string, std::string>;

/// Writes `name: value` lines; a terminal gets the values in one column.
void print_lines(const std::vector<Line>& lines);

/// One entry: lines of the fields that its role has, or one JSON object with all keys.
void print_entry(const Entry& entry, const OutputStyle& style);

/// All entries: a table on a terminal, lines of fields between tabs on a pipe, or a JSON array.
void print_entries(const std::vector<Entry>& entries, const OutputStyle& style);

/// The role's name on the command line, or the element name when no role has it.
std::string role_name(const Entry& entry);

/// Writes to standard output at once and wipes the text. Throws Failure when it cannot be written.
void print_and_wipe(std::string& text);

/// One line on standard error, which begins with the program's name.
void print_error(const std::string& message);

} // namespace tool
