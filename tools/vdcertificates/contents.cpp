#include <algorithm>

#include "ConfigurationFile/configuration_file_access.h"
#include "ConfigurationFile/merge.h"
#include "qncore/string_conversion.h"
#include "tools/vdcertificates/transaction.h"

namespace tool {
namespace {

using qncore::equal_nocase_ascii;
using vdcertificates::ConfigurationFileAccess;

using Nodes = std::vector<Contents::Node>;

/// Calls `visit` with each group of entries that may hold an entry of the role, and its server.
template <class Visit>
void for_each_group(Contents::Section& section, const Role& role, const std::string& server,
                    const Visit& visit) {
    if (!role.by_server) {
        visit(section.certificates, server);
        return;
    }
    for (auto& [key, nodes] : section.notifiers) {
        if (equal_nocase_ascii(key, server)) {
            visit(nodes, key);
        }
    }
}

auto has_name(const std::string& name) {
    return [&name](const Contents::Node& node) { return equal_nocase_ascii(node.name, name); };
}

void wipe_passwords(Nodes& nodes) noexcept {
    for (Contents::Node& node : nodes) {
        wipe(node.password);
    }
}

} // namespace

Contents::~Contents() {
    for (Section& section : sections_) {
        wipe_passwords(section.certificates);
        for (auto& [server, nodes] : section.notifiers) {
            wipe_passwords(nodes);
        }
    }
}

Contents::Section& Contents::section(const std::string& name) {
    std::size_t i = 0;
    while (ConfigurationFileAccess::sections[i]->name != name) {
        ++i;
    }
    return sections_[i];
}

void Contents::add(Entry&& entry) {
    Section& where = section(*entry.section);
    Nodes& nodes = entry.by_server ? where.notifiers[entry.server] : where.certificates;
    nodes.push_back(std::move(entry.node));
}

const Contents::Node* Contents::find(const Role& role, std::string& server) {
    const Node* found = nullptr;
    bool is_first_group = true; // searches look at no other
    std::string spelling;
    for_each_group(section(role.section), role, server, [&](Nodes& nodes, const std::string& key) {
        const auto node = std::ranges::find_if(nodes, has_name(role.element));
        if (is_first_group && node != nodes.end()) {
            found = &*node;
            spelling = key;
        }
        is_first_group = false;
    });
    if (found != nullptr) {
        server = spelling;
    }
    return found;
}

void Contents::place(Entry&& entry) {
    Section& where = section(*entry.section);
    Section change;
    Nodes& nodes = entry.by_server ? change.notifiers[entry.server] : change.certificates;
    nodes.push_back(std::move(entry.node));
    vdcertificates::merge(change, where);
    wipe_passwords(nodes);
}

std::size_t Contents::remove(const Role& role, const std::string& server) {
    std::size_t count = 0;
    Section& where = section(role.section);
    for_each_group(where, role, server, [&](Nodes& nodes, const std::string&) {
        const auto kept =
            std::stable_partition(nodes.begin(), nodes.end(), std::not_fn(has_name(role.element)));
        std::for_each(kept, nodes.end(), [](Node& node) { wipe(node.password); });
        count += static_cast<std::size_t>(nodes.end() - kept);
        nodes.erase(kept, nodes.end());
    });
    std::erase_if(where.notifiers, [](const auto& group) { return group.second.empty(); });
    return count;
}

void Contents::for_each(const Visitor& visit) const {
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const std::string& name = ConfigurationFileAccess::sections[i]->name;
        for (const Node& node : sections_[i].certificates) {
            visit(name, nullptr, node);
        }
        for (const auto& [server, nodes] : sections_[i].notifiers) {
            for (const Node& node : nodes) {
                visit(name, &server, node);
            }
        }
    }
}

} // namespace tool
