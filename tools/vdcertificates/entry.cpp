#include "tools/vdcertificates/entry.h"

namespace tool {
namespace {

std::string title_of(std::string name, bool by_server, const std::string& server) {
    return by_server ? name + " of the server '" + server + "'" : std::move(name);
}

} // namespace

std::string Entry::role_name() const {
    const Role* found = role();
    return found != nullptr ? std::string(found->name) : node.name;
}

std::string Entry::title() const {
    return title_of(role_name(), by_server, server);
}

std::string title(const Role& role, const std::string& server) {
    return title_of(std::string(role.name), role.by_server, server);
}

} // namespace tool
