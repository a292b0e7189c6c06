#pragma once

#include <string>
#include <vector>

#include "ConfigurationFile/configuration_file.h"
#include "tools/vdcertificates/secret.h"

namespace tool {

/// One entry of the file, and where it stands. The password is wiped when the entry goes.
struct Entry {
    Entry() = default;
    Entry(Entry&&) = default;
    Entry& operator=(Entry&&) = default;
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { wipe(node.password); }

    std::string section;
    bool by_server = false; ///< it stands under a server name
    std::string server;
    vdcertificates::CertificateNode node;
};

/// The names of the three sections in the order of the file.
const std::vector<std::string>& section_names();

/// Appends the entries of one section, in the order of the file. Throws what the library throws,
/// and then appends what stood before the fault.
void read_section(vdcertificates::ConfigurationFile& file, const std::string& section,
                  std::vector<Entry>& entries);

} // namespace tool
