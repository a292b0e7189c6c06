#include "tools/vdcertificates/command_line.h"

#include <algorithm>
#include <array>

#include <CLI/CLI.hpp>

#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

constexpr const char* about =
    "Keeps the record of this machine's certificates: for each role, where its key and\n"
    "certificate files lie, and the password that opens them.";

constexpr const char* about_roles =
    "\nThere is one cluster certificate for the machine; entries of every other role stand\n"
    "under the name of a server (--server). Names of servers are found whatever their case.";

constexpr const char* example_of_program =
    "\nExample:\n"
    "  vdcertificates set cluster --public-key /keys/cluster.pub --private-key "
    "/keys/cluster.key \\\n"
    "      --certificate /keys/cluster.crt --prompt\n"
    "  vdcertificates get cluster\n\n"
    "vdcertificates COMMAND --help tells more, and so does man vdcertificates.\n"
    "Exit status: 0 done, 1 failed, 2 wrong usage, 3 no such entry.";

constexpr const char* example_of_set =
    "\nThe entry is stored in place of the former one of that role and server. The files that\n"
    "it names are not looked at. Without --password-stdin, --password-file or --prompt the\n"
    "entry has no password, and a stored one is removed; the same goes for --trusted.\n\n"
    "Example:\n"
    "  vdcertificates set subsystems-server --server SRV01 --public-key /keys/srv01.pub \\\n"
    "      --private-key /keys/srv01.key --certificate /keys/srv01.crt \\\n"
    "      --trusted /keys/authority.crt --password-file /root/srv01.password";

constexpr const char* example_of_get =
    "\nExample:\n"
    "  vdcertificates get subsystems-server --server SRV01 --format json\n\n"
    "The exit status is 3 when there is no such entry.";

constexpr const char* example_of_list =
    "\nA terminal gets a table. A pipe gets one line for each entry, its fields between tabs:\n"
    "role, server, public key, private key, certificate, trusted, and with --show-passwords the\n"
    "password.\n\n"
    "Example:\n"
    "  vdcertificates list | cut -f 1,2,5";

constexpr const char* example_of_where =
    "\nThe file is the one that the environment variable ORVA_Certificates names; else it lies,\n"
    "as the key files always do, in the directory that the machine's setting names, else below\n"
    "the user's profile. Key files that are missing are made, as by every command.\n\n"
    "Example:\n"
    "  vdcertificates where";

constexpr const char* example_of_check =
    "\nLines begin with ok, note, warning or problem. The exit status is 1 when there is a\n"
    "problem, else 0.\n\n"
    "Example:\n"
    "  vdcertificates check";

constexpr std::array<std::pair<const char*, Command>, 5> commands{{
    {"set", Command::set},
    {"get", Command::get},
    {"list", Command::list},
    {"where", Command::where},
    {"check", Command::check},
}};

constexpr const char* known_commands = "set, get, list, where and check";

/// The definition of all commands, and what their options fill.
class Definition {
  public:
    Definition() {
        app.require_subcommand(1);
        app.allow_windows_style_options(false);
        app.set_version_flag("--version", "vdcertificates " ORVA_VERSION);
        app.footer(example_of_program);
        app.get_formatter()->column_width(28);
        define_set();
        define_get();
        define_list();
        define("where", "Say which file and which keys are used, and which rule chose them",
               example_of_where);
        define("check", "Read everything and say what is wrong and what to do", example_of_check);
    }

    CLI::App app{about, "vdcertificates"};
    std::string role;
    std::string format = "text";
    std::string server;
    std::string password_file;
    vdcertificates::CertificateNode node;
    bool show_passwords = false;
    bool password_stdin = false;
    bool prompt = false;

  private:
    CLI::App* define(const char* name, const char* what, const char* footer) {
        CLI::App* command = app.add_subcommand(name, what);
        command->footer(footer);
        return command;
    }

    void add_role(CLI::App* command) {
        command->add_option("ROLE", role, "One of " + role_names())->required()->type_name("");
        add_text(command, "--server", server, "NAME",
                 "The server that the entry belongs to; all roles but cluster need it");
    }

    void add_format(CLI::App* command) {
        add_text(command, "--format", format, "text|json", "How to print; text unless given");
    }

    static CLI::Option* add_text(CLI::App* command, const char* name, std::string& value,
                                 const char* type, const char* what) {
        return command->add_option(name, value, what)->type_name(type);
    }

    void define_set() {
        CLI::App* command = define("set", "Store an entry", example_of_set);
        add_role(command);
        add_text(command, "--public-key", node.publicKeyPath, "PATH", "Public key")->required();
        add_text(command, "--private-key", node.privateKeyPath, "PATH", "Private key")->required();
        add_text(command, "--certificate", node.certificatePath, "PATH", "Certificate")->required();
        add_text(command, "--trusted", node.trustedCertificatePath, "PATH",
                 "Trusted certificate; roles cluster, subsystems and web-config have none");
        command->add_flag("--password-stdin", password_stdin,
                          "Read the password from standard input, less one line end");
        add_text(command, "--password-file", password_file, "FILE",
                 "Read the password from a file, less one line end");
        command->add_flag("--prompt", prompt, "Ask for the password on the terminal, twice");
    }

    void define_get() {
        CLI::App* command = define("get", "Print an entry", example_of_get);
        add_role(command);
        add_format(command);
        command->add_flag("--show-password", show_passwords, "Print the password, too");
    }

    void define_list() {
        CLI::App* command = define("list", "Print all entries", example_of_list);
        add_format(command);
        command->add_flag("--show-passwords", show_passwords, "Print the passwords, too");
    }
};

/// The command that the words name; the program itself when they begin with an option.
CLI::App& find_command(CLI::App& app, const std::vector<std::string>& words) {
    if (words.empty()) {
        throw UsageError(std::string("a command is missing: one of ") + known_commands +
                         " (vdcertificates --help tells more)");
    }
    if (words.front().starts_with('-')) {
        return app;
    }
    for (const auto& [name, command] : commands) {
        if (words.front() == name) {
            return *app.get_subcommand(name);
        }
    }
    throw UsageError("unknown command '" + words.front() + "': the commands are " + known_commands);
}

/// Looks at each option before the parser does, which would take the next option for a missing
/// value, a value for a flag, and `++` for nothing at all. `--name=` becomes two words.
std::vector<std::string> check_options(CLI::App& command, const std::vector<std::string>& words) {
    std::vector<std::string> checked;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "++") {
            throw UsageError("unexpected argument '++'");
        }
        if (word == "--") {
            checked.insert(checked.end(), words.begin() + static_cast<std::ptrdiff_t>(i),
                           words.end());
            break;
        }
        checked.push_back(word);
        if (!word.starts_with('-') || word == "-") {
            continue;
        }
        const std::string name = word.substr(0, word.find('='));
        const CLI::Option* option = command.get_option_no_throw(name);
        if (option == nullptr || option->get_positional()) {
            throw UsageError("unknown option '" + name + "'");
        }
        const bool takes_value = option->get_items_expected_max() > 0;
        if (word.size() != name.size()) {
            if (!takes_value) {
                throw UsageError(name + " takes no value");
            }
            if (word.size() == name.size() + 1) {
                checked.back() = name;
                checked.emplace_back();
            }
        } else if (takes_value) {
            if (i + 1 == words.size() || words[i + 1].starts_with("--")) {
                throw UsageError(name + " needs a value");
            }
            checked.push_back(words[++i]);
        }
    }
    return checked;
}

/// Throws UsageError; true when the user wants help or the version and gets it in `help`.
bool parse(Definition& definition, const std::vector<std::string>& words, std::string& help) {
    CLI::App& app = definition.app;
    CLI::App& command = find_command(app, words);
    std::vector<std::string> checked = check_options(command, words);
    std::ranges::reverse(checked); // as the parser wants them
    try {
        app.parse(std::move(checked));
        return false;
    } catch (const CLI::CallForVersion& version) {
        help = std::string(version.what()) + "\n";
        return true;
    } catch (const CLI::CallForHelp&) {
        help = command.help(&command == &app ? "" : "vdcertificates");
        return true;
    } catch (const CLI::ExtrasError&) {
        const std::vector<std::string> extras = app.remaining(true);
        const auto extra =
            std::ranges::find_if(extras, [](const std::string& word) { return word != "--"; });
        throw UsageError("unexpected argument '" + (extra != extras.end() ? *extra : "--") + "'");
    } catch (const CLI::ArgumentMismatch& mismatch) {
        const std::string what = mismatch.what();
        throw UsageError(what.substr(0, what.find(':')) + " is given more than once");
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
}

const Role& checked_role(const Definition& definition) {
    const Role* role = find_role(definition.role);
    if (role == nullptr) {
        throw UsageError("unknown role '" + definition.role + "': the roles are " + role_names());
    }
    return *role;
}

void check_server_use(const Role& role, bool given) {
    const std::string name(role.name);
    if (role.by_server() && !given) {
        throw UsageError("the role " + name + " needs --server");
    }
    if (!role.by_server() && given) {
        throw UsageError("the role " + name + " takes no --server: there is one for the machine");
    }
}

PasswordSource checked_source(const Definition& definition, bool file_given) {
    if (definition.password_stdin + definition.prompt + file_given > 1) {
        throw UsageError("--password-stdin, --password-file and --prompt exclude each other");
    }
    if (definition.password_stdin) {
        return PasswordSource::standard_input;
    }
    if (definition.prompt) {
        return PasswordSource::prompt;
    }
    return file_given ? PasswordSource::file : PasswordSource::none;
}

Format checked_format(const std::string& name) {
    if (name != "text" && name != "json") {
        throw UsageError("unknown format '" + name + "': the formats are text and json");
    }
    return name == "json" ? Format::json : Format::text;
}

void check_texts(const Role& role, const Entry& entry, bool trusted_given) {
    if (trusted_given && !role.has_trusted_path()) {
        throw UsageError("the role " + std::string(role.name) + " takes no --trusted");
    }
    if (role.by_server()) {
        check_server_name("--server", entry.server);
    }
    check_path("--public-key", entry.node.publicKeyPath);
    check_path("--private-key", entry.node.privateKeyPath);
    check_path("--certificate", entry.node.certificatePath);
    check_trusted_path("--trusted", entry.node.trustedCertificatePath);
}

} // namespace

CommandLine parse_command_line(std::vector<std::string> words) {
    Definition definition;
    CommandLine result;
    if (parse(definition, words, result.help)) {
        return result;
    }
    const CLI::App& command = *definition.app.get_subcommands().front();
    const auto given = [&](const char* option) {
        const CLI::Option* found = command.get_option_no_throw(option);
        return found != nullptr && found->count() > 0;
    };
    result.command =
        std::ranges::find(commands, command.get_name(), &decltype(commands)::value_type::first)
            ->second;
    result.style = {checked_format(definition.format), definition.show_passwords};
    if (result.command == Command::set || result.command == Command::get) {
        result.role = &checked_role(definition);
        check_server_use(*result.role, given("--server"));
        result.entry.by_server = result.role->by_server();
        result.entry.server = std::move(definition.server);
    }
    if (result.command == Command::set) {
        result.entry.node = std::move(definition.node);
        check_texts(*result.role, result.entry, given("--trusted"));
        result.password_source = checked_source(definition, given("--password-file"));
        result.password_file = std::move(definition.password_file);
    }
    if (result.command == Command::get && result.entry.by_server) {
        check_searched_name("--server", result.entry.server);
    }
    return result;
}

} // namespace tool
