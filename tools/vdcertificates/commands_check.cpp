#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/key_file.h"
#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/key_files.h"
#include "tools/vdcertificates/open_store.h"
#include "tools/vdcertificates/root_element.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

using vdcertificates::ConfigurationFile;

/// What the check has to say, line by line.
class Findings {
  public:
    void ok(const std::string& text) { lines_.emplace_back("ok", text); }
    void note(const std::string& text) { lines_.emplace_back("note", text); }
    void warn(const std::string& text) { lines_.emplace_back("warning", text); }
    void problem(const std::string& text) {
        lines_.emplace_back("problem", text);
        ++problems_;
    }

    ExitStatus print() const {
        print_lines(lines_);
        return problems_ == 0 ? status_done : status_failed;
    }

  private:
    std::vector<Line> lines_;
    int problems_ = 0;
};

std::string name_of(const Entry& entry) {
    return role_name(entry) + (entry.by_server ? " of the server '" + entry.server + "'" : "");
}

void check_key_files(Findings& findings) {
    const KeyFiles keys = key_files();
    for (const std::string& path : {keys.public_key, keys.private_key}) {
        if (!platform::exists(path)) {
            findings.problem("the key file " + path + " is gone");
        } else if (platform::is_open_to_others(path)) {
            // The public key is the one that passwords are deciphered with.
            findings.problem("every account may use the key file " + path +
                             ", and whoever reads the keys can read the passwords: take all "
                             "permissions from others");
        } else {
            findings.ok("key file " + path);
        }
    }
}

void check_trace(const LibraryTrace& trace, Findings& findings) {
    for (const std::string& warning : trace.warnings()) {
        findings.warn(warning);
    }
    if (const std::string replacement = trace.key_replacement(); !replacement.empty()) {
        findings.problem("the key pair was unusable and has been replaced; passwords stored with "
                         "it are lost: set them again. " +
                         replacement);
    }
}

/// What ended the reading, and what to do about it.
std::string diagnosis(const std::string& path, const std::string& fault,
                      const std::vector<Entry>& entries) {
    const std::string next = " Keep a copy of the file: the next set rewrites it with what stands "
                             "before the fault and drops the rest.";
    if (fault.starts_with("[line ")) {
        return path + " is not well-formed: " + fault +
               ". Mend it by hand, or set the entries "
               "again." +
               next;
    }
    const std::string place =
        entries.empty() ? "the first entry" : "the entry behind " + name_of(entries.back());
    return "the password of " + place + " cannot be deciphered (" + fault +
           "): the key pair was replaced, or the file comes from another machine. Set that "
           "password and those behind it again." +
           next;
}

/// Asks for the file as the library does, shared with nobody. False when it cannot be read at
/// all; the findings then say why.
bool check_is_readable(const std::string& path, Findings& findings) {
    const auto file = platform::open_file(path, platform::FileAccess::read,
                                          platform::FileDisposition::open_existing,
                                          platform::FileSharing::none, {});
    if (file) {
        platform::close_file(*file);
        return true;
    }
    if (file.error().is_not_found()) {
        findings.note("nothing has been set yet: " + path + " is not there");
    } else {
        findings.problem(path + " cannot be opened: " + platform::describe(file.error()));
    }
    return false;
}

/// An empty file, and one with another root, read as one without entries.
void check_root(const std::string& path, Findings& findings) {
    const RootElement root = root_element(path);
    if (root.file_is_empty) {
        findings.note("nothing has been set yet: " + path + " is empty");
    } else if (root.name != ConfigurationFile::sm_configurationFile) {
        findings.problem(path + " has the root element '" + root.name + "' in place of '" +
                         ConfigurationFile::sm_configurationFile +
                         "' and counts as empty; the next set replaces it");
    } else {
        findings.ok(path);
    }
}

/// An entry is found by its accessor only where its role belongs.
void check_place(const Entry& entry, Findings& findings) {
    const Role* role = find_role_by_element(entry.node.name);
    const std::string where = "in the section " + entry.section;
    if (role == nullptr) {
        findings.warn("the entry '" + entry.node.name + "' " + where + " belongs to no role");
    } else if (entry.section != role->section) {
        findings.problem("the entry " + name_of(entry) + " stands " + where + ", where nobody " +
                         "looks for it: it belongs in " + role->section);
    } else if (entry.by_server != role->by_server()) {
        findings.problem("the entry " + name_of(entry) + " stands " +
                         (entry.by_server ? "under a server" : "outside of all servers") +
                         ", where nobody looks for it");
    }
}

/// Searches take the first server whose name is equal but for case, and there the first entry.
void check_hidden(const std::vector<Entry>& entries, Findings& findings) {
    std::map<std::pair<std::string, std::string>, std::string> servers;
    std::set<std::array<std::string, 3>> seen;
    for (const Entry& entry : entries) {
        const std::string server = folded(entry.server);
        const std::string& first =
            servers.try_emplace({entry.section, server}, entry.server).first->second;
        if (first != entry.server) {
            findings.problem("the entry " + name_of(entry) + " is hidden by the server '" + first +
                             "', whose name differs only in case");
        } else if (!seen.insert({entry.section, entry.by_server ? server + "/" : "",
                                 folded(entry.node.name)})
                        .second) {
            findings.problem("the entry " + name_of(entry) +
                             " stands twice: only the first one is used");
        }
    }
}

void check_named_files(const Entry& entry, Findings& findings) {
    const auto& node = entry.node;
    for (const std::string& path : {node.publicKeyPath, node.privateKeyPath, node.certificatePath,
                                    node.trustedCertificatePath}) {
        if (path.empty()) {
            continue;
        }
        if (const platform::SystemError error = platform::check_existence(path)) {
            findings.warn("the entry " + name_of(entry) + " names " + path + ": " +
                          platform::describe(error));
        }
    }
}

} // namespace

ExitStatus run_check() {
    OpenStore store;
    Findings findings;
    const std::string path = store.path();
    check_key_files(findings);
    check_trace(store.trace(), findings);
    if (!check_is_readable(path, findings)) {
        return findings.print();
    }
    std::vector<Entry> entries;
    const std::string fault = store.read_all(entries);
    if (!fault.empty()) {
        findings.problem(diagnosis(path, fault, entries));
    } else {
        check_root(path, findings);
    }
    for (const Entry& entry : entries) {
        check_place(entry, findings);
        check_named_files(entry, findings);
    }
    check_hidden(entries, findings);
    return findings.print();
}

} // namespace tool
