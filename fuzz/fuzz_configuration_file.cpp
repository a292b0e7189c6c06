// The whole read of a configuration file from any bytes, on a machine of its own. What was read is
// written in the file's own form and read once more, with the same outcome.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "fuzz/require.h"
#include "qncore/error_exception.h"
#include "tests/ConfigurationFile/store_fixture.h"

namespace {

using vdcertificates::CertificateNode;
using Access = vdcertificates::ConfigurationFileAccess;
using Sections = std::vector<vdcertificates::ConfigurationFileNodes>;

const Access::Section* const sections[] = {&Access::notifiers, &Access::devices,
                                           &Access::media_retrieval};

Sections read(vdcertificates::ConfigurationFile& file, const std::string& text) {
    support::write_file(Access::path(file), text);
    Sections read;
    for (const Access::Section* section : sections) {
        read.push_back(Access::read(file, *section));
    }
    return read;
}

std::string write(vdcertificates::ConfigurationFile& file, Sections nodes) {
    std::string text = "<ORVACertificates>";
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        text += Access::merge(file, {}, nodes[i], sections[i]->name);
    }
    return text + "</ORVACertificates>";
}

/// False for a text with bytes that do not come back, and for one that is read as white space
/// between elements.
bool comes_back(const std::string& text, std::string_view lost) {
    return text.find_first_of(lost) == std::string::npos &&
           (text.empty() || text.find_first_not_of(" \t\n") != std::string::npos);
}

/// One field alone is escaped when it is written. Prefixes lose their declarations.
bool comes_back(const CertificateNode& entry) {
    return comes_back(entry.name, ":") && comes_back(entry.publicKeyPath, "<&\r") &&
           comes_back(entry.privateKeyPath, "<&\r") && comes_back(entry.certificatePath, "<&\r") &&
           comes_back(entry.trustedCertificatePath, "\r");
}

bool comes_back(const std::vector<CertificateNode>& entries) {
    return std::all_of(entries.begin(), entries.end(),
                       [](const CertificateNode& entry) { return comes_back(entry); });
}

bool comes_back(const vdcertificates::ConfigurationFileNodes& nodes) {
    return comes_back(nodes.certificates) &&
           std::all_of(nodes.notifiers.begin(), nodes.notifiers.end(), [](const auto& server) {
               return comes_back(server.first, "<&\"\t\r\n") && comes_back(server.second);
           });
}

std::string show(const Sections& nodes) {
    std::string text;
    for (const auto& section : nodes) {
        text += store_test::show(section) + "\n";
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static store_test::Machine machine;
    static vdcertificates::ConfigurationFile file;
    Sections nodes;
    try {
        nodes = read(file, std::string(data, data + size));
    } catch (const qncore::ErrorException&) {
        return 0; // a faulty file
    }
    const auto all_come_back = [](const auto& section) { return comes_back(section); };
    if (std::all_of(nodes.begin(), nodes.end(), all_come_back)) {
        const std::string text = write(file, nodes);
        fuzz::require(show(read(file, text)) == show(nodes), "what is written is read: " + text);
    }
    return 0;
}
