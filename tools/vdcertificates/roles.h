#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tool {

/// One of the nine roles.
struct Role {
    std::string_view name;      ///< on the command line
    const std::string& element; ///< the name of its entry in the file
    const std::string& section; ///< the section of the entry
    bool by_server;             ///< there is one entry per server name
    bool has_trusted_path;
    bool tries_short_name = false; ///< a search continues with the short name of the host
};

/// The roles in the order of the documentation.
const std::array<Role, 9>& roles();

/// The role of that exact name, or null.
const Role* find_role(std::string_view name);

/// The role whose entry has this element name, ignoring case, or null.
const Role* find_role_by_element(std::string_view element);

/// The name of one of the file's sections, or null.
const std::string* find_section(std::string_view name);

/// "cluster, subsystems, ...": for messages and help.
std::string role_names();

} // namespace tool
