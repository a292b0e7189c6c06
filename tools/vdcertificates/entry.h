#pragma once

#include <string>
#include <string_view>
#include <tuple>

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
    std::string_view role_name() const {
        const Role* found = role();
        return found != nullptr ? found->name : std::string_view(node.name);
    }
    /// "ROLE of the server 'NAME'".
    std::string title() const {
        const std::string name(role_name());
        return by_server ? name + " of the server '" + server + "'" : name;
    }

    const std::string* section = nullptr; ///< the name of its section
    bool by_server = false;               ///< it is under a server name
    bool password_is_readable = true;     ///< else the password is empty
    std::string server;
    vdcertificates::CertificateNode node;
};

/// All that an entry holds besides its name, for comparison.
inline auto fields_of(const vdcertificates::CertificateNode& node) {
    return std::tie(node.publicKeyPath, node.privateKeyPath, node.certificatePath,
                    node.trustedCertificatePath, node.password);
}

} // namespace tool
