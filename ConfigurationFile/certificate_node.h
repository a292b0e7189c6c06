#pragma once

#include <map>
#include <string>
#include <vector>

namespace vdcertificates {

/// One entry of the file. Texts are UTF-8. The library never opens the paths.
struct CertificateNode {
    std::string name;                   ///< the role's element name, such as "SIPDevice"
    std::string publicKeyPath;          ///< of the file with the public key
    std::string privateKeyPath;         ///< of the file with the private key
    std::string certificatePath;        ///< of the file with the certificate
    std::string password;               ///< in clear; enciphered in the file
    std::string trustedCertificatePath; ///< empty in roles that have none
};

/// One section of the file.
struct ConfigurationFileNodes {
    /// The entries directly in the section, in file order.
    std::vector<CertificateNode> certificates;
    /// The entries by server name. Keys are ordered by their bytes, but all searches ignore the
    /// case of ASCII letters.
    std::map<std::string, std::vector<CertificateNode>> notifiers;
};

} // namespace vdcertificates
