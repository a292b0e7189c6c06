#include "tools/vdcertificates/entry.h"

#include "ConfigurationFile/configuration_file_access.h"

namespace tool {
namespace {

using vdcertificates::CertificateNode;
using vdcertificates::ConfigurationFile;

/// Hands what the library has read over to the entries when it goes, however it goes.
class SectionReader {
  public:
    SectionReader(const std::string& section, std::vector<Entry>& entries)
        : section_(section)
        , entries_(entries) {}
    SectionReader(const SectionReader&) = delete;
    SectionReader& operator=(const SectionReader&) = delete;
    ~SectionReader() {
        for (CertificateNode& node : nodes.certificates) {
            append(node, false, "");
        }
        for (auto& [server, group] : nodes.notifiers) {
            for (CertificateNode& node : group) {
                append(node, true, server);
            }
        }
    }

    vdcertificates::ConfigurationFileNodes nodes;

  private:
    void append(CertificateNode& node, bool by_server, const std::string& server) {
        Entry& entry = entries_.emplace_back();
        entry.section = section_;
        entry.by_server = by_server;
        entry.server = server;
        entry.node = node;
        wipe(node.password);
    }

    const std::string& section_;
    std::vector<Entry>& entries_;
};

} // namespace

const std::vector<std::string>& section_names() {
    static const std::vector<std::string> names{ConfigurationFile::sm_notifiersNode,
                                                ConfigurationFile::sm_devicesNode,
                                                ConfigurationFile::sm_mediaRetrievalNode};
    return names;
}

void read_section(ConfigurationFile& file, const std::string& section,
                  std::vector<Entry>& entries) {
    SectionReader reader(section, entries);
    vdcertificates::ConfigurationFileAccess::read(file, section, reader.nodes);
}

} // namespace tool
