#include <algorithm>
#include <charconv>
#include <tuple>

#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/permissions.h"
#include "qncore/string_conversion.h"
#include "tools/vdcertificates/certificate_files.h"
#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/findings.h"
#include "tools/vdcertificates/requests.h"
#include "tools/vdcertificates/store.h"

namespace tool {
namespace {

using Entries = std::deque<Entry>;
using enum Severity;

constexpr int usual_days = 30;

int days_of(const Arguments& arguments) {
    const std::string& text = arguments.text(Option::days);
    int days = usual_days;
    if (!arguments.has(Option::days)) {
        return days;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), days);
    if (error != std::errc() || end != text.data() + text.size() || days < 0 || days > 36500) {
        throw UsageError("--days needs a number from 0 to 36500");
    }
    if (!arguments.has(Option::files)) {
        throw UsageError("--days needs --files");
    }
    return days;
}

void check_keys(const Store& store, Findings& findings) {
    for (const std::string& path : {store.keys().public_key, store.keys().private_key}) {
        if (findings.holds(platform::is_open_to_others(path), path)) {
            // Passwords are deciphered with the public key.
            findings.add(problem, "key_file_open",
                         "every account may use the key file " + path +
                             ", and whoever reads the keys can read the passwords: take all "
                             "permissions from others",
                         path);
        } else {
            findings.add(ok, "key_file", "key file " + path, path);
        }
    }
    const std::string& directory = store.keys().directory;
    if (findings.holds(platform::is_writable_for_all(directory), directory)) {
        findings.add(problem, "directory_writable",
                     "every account may put other keys into the directory " + directory +
                         ": take the permission to write from others",
                     directory);
    }
}

/// " ...: restore" if the former content exists.
std::string restore_hint(const std::string& path, Findings& findings) {
    if (!findings.holds(existence(previous_of(path)), previous_of(path))) {
        return "";
    }
    return " The content before the last change is in " + previous_of(path) +
           ": vdcertificates restore brings it back.";
}

void check_empty_file(const Store& store, Findings& findings) {
    const std::string& path = store.path();
    if (const std::string hint = restore_hint(path, findings); !hint.empty()) {
        findings.add(problem, "file_empty", path + " is empty." + hint, path);
        return;
    }
    // A file that the variable names is created by the first read, any other by the first entry.
    const bool is_named = path == named_file();
    findings.add(is_named ? note : warning, "file_empty",
                 "nothing has been set yet: " + path + " is empty", path);
}

void check_form(const Store& store, const Reading& reading, std::size_t count, Findings& findings) {
    const std::string& path = store.path();
    if (!reading.file_exists) {
        findings.add(note, "file_missing", "nothing has been set yet: " + path + " is not there",
                     path);
    } else if (reading.file_is_empty) {
        check_empty_file(store, findings);
    } else if (!reading.fault.empty()) {
        findings.add(problem, "file_broken",
                     path + " is not well-formed: " + reading.fault +
                         (reading.last_entry.empty()
                              ? ". No entry can be read."
                              : ". The last entry before that is " + reading.last_entry + ".") +
                         " Changes are refused until it is mended by hand." +
                         restore_hint(path, findings),
                     path);
    } else if (!reading.root_is_right) {
        findings.add(problem, "file_foreign",
                     path + " has the root element '" + reading.root + "' in place of '" +
                         vdcertificates::ConfigurationFile::sm_configurationFile +
                         "': it is another kind of document, and counts as empty",
                     path);
    } else {
        findings.add(
            ok, "file",
            path + " holds " + std::to_string(count) + (count == 1 ? " entry" : " entries"), path);
    }
    if (reading.file_exists && findings.holds(platform::is_writable_for_all(path), path)) {
        findings.add(problem, "file_writable",
                     "every account may change " + path +
                         ": take the permission to write from "
                         "others",
                     path);
    }
    for (const std::string& ignored : reading.ignored) {
        findings.add(warning, "element_ignored",
                     ignored + " of " + path + " has no meaning, and a change would drop it", path);
    }
}

/// An accessor finds an entry only in the section of its role.
void check_place(const Entry& entry, Findings& findings) {
    const Role* role = entry.role();
    const std::string where = "in the section " + *entry.section;
    if (role == nullptr) {
        findings.add(warning, "entry_without_role", entry, where + " belongs to no role");
    } else if (*entry.section != role->section) {
        findings.add(problem, "entry_misplaced", entry,
                     "is " + where + ", where nobody looks for it: it belongs in " + role->section);
    } else if (entry.by_server != role->by_server) {
        findings.add(problem, "entry_misplaced", entry,
                     std::string("is ") +
                         (entry.by_server ? "under a server" : "outside of all servers") +
                         ", where nobody looks for it");
    }
}

void check_password(const Entry& entry, const Reading& reading, Findings& findings) {
    if (!entry.password_is_readable) {
        findings.add(problem, "password_unreadable", entry,
                     "has a password that cannot be deciphered (" + reading.password_fault +
                         "): the key pair was replaced, or the file comes from another machine. "
                         "Set that password again");
    }
}

/// Look-ups use the first spelling of a server in byte order, and its first entry.
void check_hidden(const Entries& entries, Findings& findings) {
    std::vector<const Entry*> sorted;
    sorted.reserve(entries.size());
    for (const Entry& entry : entries) {
        sorted.push_back(&entry);
    }
    const auto compare = [](const std::string& left, const std::string& right) {
        return qncore::compare_nocase_ascii(left.data(), left.size(), right.data(), right.size());
    };
    const auto same_group = [&](const Entry& left, const Entry& right) {
        return left.section == right.section && left.by_server == right.by_server &&
               compare(left.server, right.server) == 0;
    };
    std::ranges::stable_sort(sorted, [&](const Entry* left, const Entry* right) {
        if (left->section != right->section) {
            return *left->section < *right->section;
        }
        if (left->by_server != right->by_server) {
            return right->by_server;
        }
        if (const int order = compare(left->server, right->server); order != 0) {
            return order < 0;
        }
        return left->server != right->server ? left->server < right->server
                                             : compare(left->node.name, right->node.name) < 0;
    });
    const Entry* first = nullptr; // of the group
    const Entry* before = nullptr;
    for (const Entry* entry : sorted) {
        first = first != nullptr && same_group(*first, *entry) ? first : entry;
        if (entry->server != first->server) {
            findings.add(problem, "entry_hidden", *entry,
                         "is hidden by the server '" + first->server +
                             "', whose name differs only in case");
        } else if (before != nullptr && same_group(*before, *entry) &&
                   before->server == entry->server &&
                   compare(before->node.name, entry->node.name) == 0) {
            findings.add(problem, "entry_twice", *entry,
                         "is there twice: only the first one is used");
        }
        before = entry;
    }
}

/// The faults of the paths of an entry, on one line.
void check_named_files(const Entry& entry, Findings& findings) {
    const auto& node = entry.node;
    std::string missing;
    std::string relative;
    for (const std::string& path : {node.publicKeyPath, node.privateKeyPath, node.certificatePath,
                                    node.trustedCertificatePath}) {
        if (path.empty()) {
            continue;
        }
        if (is_relative(path)) {
            relative += (relative.empty() ? "" : ", ") + path;
        }
        const platform::SystemError error = platform::check_existence(path);
        if (error && !error.is_not_found() && !error.is_access_denied()) {
            findings.add(refused_look(path, error));
        } else if (error) {
            missing += (missing.empty() ? "" : ", ") + path + ": " + platform::describe(error);
        }
    }
    if (!missing.empty()) {
        findings.add(warning, "named_file_missing", entry, "names " + missing);
    }
    if (!relative.empty()) {
        findings.add(warning, "path_relative", entry,
                     "has relative paths, which each program takes from its own directory: " +
                         relative);
    }
}

/// The findings and entries of one read, during which the lock is held.
struct Look {
    Findings findings;
    Entries entries;
};

void look_at_file(Store& store, Look& look) {
    check_keys(store, look.findings);
    look.findings.add_remarks(store);
    const Reading reading =
        store.read([&](Entry&& entry) { look.entries.push_back(std::move(entry)); });
    store.unlock();
    check_form(store, reading, look.entries.size(), look.findings);
    for (const Entry& entry : look.entries) {
        check_place(entry, look.findings);
        check_password(entry, reading, look.findings);
    }
}

} // namespace

ExitStatus run_check(const Arguments& arguments) {
    const Format format = format_of(arguments);
    const int days = days_of(arguments);
    Look look;
    try {
        Store store;
        look_at_file(store, look);
    } catch (const Failure& failure) {
        look.findings.add(failure);
    }
    check_hidden(look.entries, look.findings);
    FindingsPrinter printer(format);
    printer.print(look.findings);
    for (const Entry& entry : look.entries) {
        if (arguments.has(Option::files)) {
            check_certificate_files(entry, days, look.findings);
        } else {
            check_named_files(entry, look.findings);
        }
        printer.print(look.findings);
    }
    printer.finish();
    return look.findings.status();
}

} // namespace tool
