#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/open_store.h"

namespace tool {
namespace {

/// What no text of the file can be, since only UTF-8 is read from it: tells an entry that is
/// missing from one that is empty.
constexpr const char* no_such_entry = "\xFF";

} // namespace

ExitStatus run_set(CommandLine& line) {
    const Secret password = read_password(line.password_source, line.password_file);
    line.entry.node.password = password.text();
    OpenStore store;
    std::vector<Entry> entries;
    const std::string fault = store.read_all(entries);
    if (!tool::store(store.file(), *line.role, line.entry)) {
        throw Failure(store.trace().cause());
    }
    store.print_warnings();
    if (!fault.empty()) {
        print_error("warning: the file could not be read to its end, and what stood behind that "
                    "place is lost: " +
                    fault);
    }
    return status_done;
}

ExitStatus run_get(CommandLine& line) {
    Entry& entry = line.entry;
    // The other outputs stay empty: a search with the short host name goes by them.
    entry.node.publicKeyPath = no_such_entry;
    OpenStore store;
    if (!fetch(store.file(), *line.role, entry)) {
        throw Failure(store.trace().cause());
    }
    store.print_warnings();
    if (entry.node.publicKeyPath == no_such_entry) {
        print_error("there is no entry of the role " + std::string(line.role->name) +
                    (entry.by_server ? " for the server " + entry.server : ""));
        return status_no_entry;
    }
    entry.node.name = line.role->element;
    print_entry(entry, line.style);
    return status_done;
}

ExitStatus run_list(const CommandLine& line) {
    OpenStore store;
    std::vector<Entry> entries;
    const std::string fault = store.read_all(entries);
    if (!fault.empty()) {
        throw Failure(fault);
    }
    store.print_warnings();
    print_entries(entries, line.style);
    return status_done;
}

} // namespace tool
