#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// Receives the members of a list of JSON objects.
struct JsonVisitor {
    std::function<void()> begin_object;
    /// Called with the text of a member, or nullopt for null. The text is the reader's only copy,
    /// in memory that does not move.
    std::function<void(const std::string& key, std::optional<std::string>& value)> member;
    std::function<void()> end_object;
};

/// Reads an array of objects, or one object, whose members are strings or null, as the program
/// writes them (RFC 8259; checks UTF-8). Throws Failure with the position of the fault.
void read_json_objects(std::string_view text, const JsonVisitor& visitor);

} // namespace tool
