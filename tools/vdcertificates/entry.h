#pragma once

#include <string>

#include "ConfigurationFile/certificate_node.h"
#include "tools/vdcertificates/roles.h"
#include "tools/vdcertificates/secret.h"

namespace tool {

/// One entry of the file and its place there. The destructor wipes the password.
struct Entry {
    Entry() = default;
    Entry(Entry&&) = default;
    Entry& operator=(Entry&&) = default;
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { wipe(node.password); }

    /// The role of the entry, or null.
    const Role* role() const { return find_role_by_element(node.name); }
    /// The role's name on the command line, or the element name if there is no such role.
    std::string role_name() const;
    /// "ROLE of the server 'NAME'".
    std::string title() const;

    const std::string* section = nullptr; ///< the name of its section
    bool by_server = false;               ///< it is under a server name
    bool password_is_readable = true;     ///< else the password is empty
    std::string server;
    vdcertificates::CertificateNode node;
};

std::string title(const Role& role, const std::string& server);

} // namespace tool
