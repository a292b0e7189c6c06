#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// What reads the members of a list of JSON objects.
struct JsonVisitor {
    std::function<void()> begin_object;
    /// The text of a member, or nothing for null. What is moved out of it is the reader's only
    /// copy, in memory that does not move.
    std::function<void(const std::string& key, std::optional<std::string>& value)> member;
    std::function<void()> end_object;
};

/// Reads an array of objects, or one object, whose members are strings or null: all that the
/// program writes itself (RFC 8259, with UTF-8 checked). Throws Failure with the place of the
/// fault.
void read_json_objects(std::string_view text, const JsonVisitor& visitor);

} // namespace tool
