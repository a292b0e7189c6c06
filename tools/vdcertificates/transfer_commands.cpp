#include <deque>

#include "ConfigurationFile/configuration_file_access.h"
#include "platform/file_backup.h"
#include "tools/vdcertificates/cms.h"
#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/input.h"
#include "tools/vdcertificates/json_reader.h"
#include "tools/vdcertificates/json_writer.h"
#include "tools/vdcertificates/requests.h"
#include "tools/vdcertificates/text_checks.h"
#include "tools/vdcertificates/transaction.h"

namespace tool {
namespace {

constexpr std::size_t largest_file = std::size_t{1} << 30;

/// The password of the exported file.
Secret file_password(const Arguments& arguments) {
    if (password_source_of(arguments) == PasswordSource::none) {
        throw UsageError("one of --password-file, --password-stdin and --prompt is required");
    }
    return password_of(arguments);
}

/// All entries as JSON. Holds the lock only while reading.
Secret entries_as_json() {
    Secret text;
    JsonWriter json(text);
    Store store;
    json.begin('[');
    const Reading reading = store.read([&](Entry&& entry) { json.entry(entry, true); });
    store.unlock();
    json.end();
    store.print_made();
    store.print_warnings();
    if (!reading.fault.empty() || !reading.root_is_right) {
        throw Failure(store.path() + " cannot be read to its end: " +
                      (reading.fault.empty() ? "it is another kind of document" : reading.fault));
    }
    for (const std::string& title : reading.unreadable_passwords) {
        print_error("warning: the password of the entry " + title +
                    " cannot be deciphered and is left out");
    }
    return text;
}

/// One entry of the imported file.
struct Import {
    Entry entry;
    bool has_password = false;
};
using Imports = std::deque<Import>;

bool is_element_name(std::string_view name) {
    constexpr std::string_view forbidden = " \t\r\n<>&\"'/=:!?";
    return !name.empty() && name.find_first_of(forbidden) == std::string_view::npos &&
           std::string_view("-.0123456789").find(name.front()) == std::string_view::npos;
}

/// Converts each object to an entry.
class ImportReader {
  public:
    Imports read(std::string_view text) {
        read_json_objects(text, {[this] { imports_.emplace_back(); },
                                 [this](const std::string& key, std::optional<std::string>& value) {
                                     take(key, value);
                                 },
                                 [this] { finish(); }});
        return std::move(imports_);
    }

  private:
    std::string before() const { return "entry " + std::to_string(imports_.size()) + ": "; }

    void take(const std::string& key, std::optional<std::string>& value) {
        Import& import = imports_.back();
        auto& node = import.entry.node;
        const std::array<std::pair<const char*, std::string*>, 6> texts{{
            {"role", &node.name},
            {"public_key", &node.publicKeyPath},
            {"private_key", &node.privateKeyPath},
            {"certificate", &node.certificatePath},
            {"trusted", &node.trustedCertificatePath},
            {"password", &node.password},
        }};
        if (key == "server") {
            import.entry.by_server = value.has_value();
            import.entry.server = value.value_or("");
            return;
        }
        if (key == "section") {
            import.entry.section = find_section(value.value_or(""));
            if (import.entry.section == nullptr) {
                throw Failure(before() + "unknown section '" + value.value_or("") + "'");
            }
            return;
        }
        for (const auto& [name, text] : texts) {
            if (key == name) {
                wipe(*text);
                *text = value ? std::move(*value) : std::string();
                import.has_password |= key == "password" && value;
                return;
            }
        }
        throw Failure(before() + "unknown member '" + key + "'");
    }

    void finish() {
        Entry& entry = imports_.back().entry;
        const Role* role = find_role(entry.node.name);
        if (role != nullptr) {
            apply(*role, entry);
        } else if (entry.section == nullptr || !is_element_name(entry.node.name)) {
            throw Failure(before() + "unknown role '" + entry.node.name + "'");
        }
        try {
            check_entry(entry, before());
            check_password(before() + "password", entry.node.password);
        } catch (const UsageError& error) {
            throw Failure(error.what());
        }
    }

    void apply(const Role& role, Entry& entry) const {
        const std::string name(role.name);
        if (role.by_server != entry.by_server) {
            throw Failure(before() + "the role " + name +
                          (role.by_server ? " needs a server" : " has no server"));
        }
        if (!role.has_trusted_path && !entry.node.trustedCertificatePath.empty()) {
            throw Failure(before() + "the role " + name + " has no trusted certificate");
        }
        entry.section = &role.section;
        entry.node.name = role.element;
    }

    Imports imports_;
};

Imports read_imports(const Arguments& arguments) {
    const std::string& path = *arguments.word();
    const bool is_plain = arguments.has(Option::plain);
    if (is_plain && password_source_of(arguments) != PasswordSource::none) {
        throw UsageError("--plain takes no password");
    }
    const Secret password = is_plain ? Secret() : file_password(arguments);
    Secret text = read_file(path, largest_file);
    try {
        if (!is_plain) {
            text = decipher_with_password(text.text(), password);
        }
        return ImportReader().read(text.text());
    } catch (const Failure& failure) {
        throw Failure(path + ": " + failure.what());
    }
}

/// Stores one entry unless the same one exists. Returns "add", "change" or "".
std::string apply(Contents& contents, Import& import) {
    Entry& entry = import.entry;
    const Role place{entry.node.name, entry.node.name, *entry.section, entry.by_server, true};
    const Contents::Node* stored = contents.find(place, entry.server);
    if (stored != nullptr && !import.has_password) {
        entry.node.password = stored->password;
    }
    if (stored != nullptr && fields_of(*stored) == fields_of(entry.node)) {
        return "";
    }
    const std::string done = stored == nullptr ? "add " : "change ";
    const std::string title = entry.title();
    contents.place(std::move(entry));
    return done + title;
}

} // namespace

ExitStatus run_export(const Arguments& arguments) {
    const Secret password = file_password(arguments);
    const Secret text = entries_as_json();
    const Secret message = encipher_for_password(text.text(), password);
    if (!arguments.has(Option::output)) {
        print(message.text());
        return status_done;
    }
    const std::string& path = arguments.text(Option::output);
    const platform::SystemError error = platform::write_whole(path, message.text());
    if (error) {
        throw Failure("cannot write " + path + ": " + platform::describe(error));
    }
    return status_done;
}

ExitStatus run_import(const Arguments& arguments) {
    Imports imports = read_imports(arguments);
    const bool is_dry = arguments.has(Option::dry_run);
    Output output;
    {
        Transaction change(arguments.has(Option::discard_unreadable));
        for (Import& import : imports) {
            if (const std::string done = apply(change.contents(), import); !done.empty()) {
                output << (is_dry ? "would " : "");
                output.append_printable(done);
                output << "\n";
            }
        }
        if (!is_dry && !output.text().text().empty()) {
            change.commit();
        }
    }
    output.flush();
    return status_done;
}

} // namespace tool
