#pragma once

#include <array>
#include <string>
#include <string_view>
#include <variant>

#include "ConfigurationFile/configuration_file.h"
#include "tools/vdcertificates/entry.h"

namespace tool {

/// One of the nine roles: its name on the command line, where its entry stands in the file, and
/// the pair of accessors. Which of their three shapes they have says what the role carries.
struct Role {
    using File = vdcertificates::ConfigurationFile;
    using SetCluster = decltype(&File::set_cluster_certificate_information);
    using GetCluster = decltype(&File::get_cluster_certificate_information);
    using SetPlain = decltype(&File::set_webconfig_certificate_information);
    using GetPlain = decltype(&File::get_webconfig_certificate_information);
    using SetTrusted = decltype(&File::set_remote_client_certificate_information);
    using GetTrusted = decltype(&File::get_remote_client_certificate_information);

    std::string_view name;
    const std::string& element; ///< the name of its entry in the file
    const std::string& section; ///< the section that the entry stands in
    std::variant<SetCluster, SetPlain, SetTrusted> setter;
    std::variant<GetCluster, GetPlain, GetTrusted> getter;

    bool by_server() const noexcept { return !std::holds_alternative<SetCluster>(setter); }
    bool has_trusted_path() const noexcept { return std::holds_alternative<SetTrusted>(setter); }
};

/// The roles in the order of the documentation.
const std::array<Role, 9>& roles();

/// The role of that exact name, or null.
const Role* find_role(std::string_view name);

/// The role whose entry has this element name (whatever its case), or null.
const Role* find_role_by_element(std::string_view element);

/// "cluster, subsystems, ...": for messages and help.
std::string role_names();

/// Stores or fetches the paths and the password of an entry through the role's accessors; false
/// when the library failed. What is fetched stays as it was when there is no such entry.
bool store(vdcertificates::ConfigurationFile& file, const Role& role, const Entry& entry);
bool fetch(vdcertificates::ConfigurationFile& file, const Role& role, Entry& entry);

} // namespace tool
