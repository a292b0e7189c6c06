#pragma once

#include <map>
#include <string>
#include <vector>

namespace vdcertificates {

/// One entry of the file. Texts are UTF-8; the paths are kept, never opened.
struct CertificateNode {
    std::string name; ///< the role's element name, such as "SIPDevice"
    std::string publicKeyPath;
    std::string privateKeyPath;
    std::string certificatePath;
    std::string password; ///< in clear: the file holds it enciphered
    std::string trustedCertificatePath;
};

/// One section of the file.
struct ConfigurationFileNodes {
    /// The entries that stand directly in the section, in file order.
    std::vector<CertificateNode> certificates;
    /// The entries under each server name. Keys are ordered by bytes, while all searches fold
    /// the case of ASCII letters.
    std::map<std::string, std::vector<CertificateNode>> notifiers;
};

} // namespace vdcertificates
