#include "tools/vdcertificates/command_line.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "tools/vdcertificates/help.h"
#include "tools/vdcertificates/output.h"

namespace tool {
namespace {

constexpr std::array<OptionDefinition, option_count> definitions{{
    {"--server", "NAME", "The server that the entry belongs to; all roles but\ncluster need it"},
    {"--public-key", "PATH", "Public key"},
    {"--private-key", "PATH", "Private key"},
    {"--certificate", "PATH", "Certificate"},
    {"--trusted", "PATH",
     "Trusted certificate; roles cluster, subsystems and\nweb-config have none"},
    {"--password-stdin", "", "Read the password from standard input, less one\nline end"},
    {"--password-file", "FILE", "Read the password from a file, less one line end"},
    {"--prompt", "", "Ask for the password on the terminal, twice"},
    {"--no-password", "", "Store no password"},
    {"--discard-unreadable", "", "Go on when something cannot be read, and lose it"},
    {"--field", "NAME", "Print the value of one field alone"},
    {"--show-password", "", "Print the password, too"},
    {"--show-passwords", "", "Print the passwords, too"},
    {"--format", "text|json", "How to print; text unless given"},
    {"--all-roles", "", "Remove every entry of the server"},
    {"--files", "", "Open the files that the entries name, too"},
    {"--days", "N", "Warn of certificates that end within N days (30)"},
    {"--output", "FILE", "Write to a file that only its owner can open"},
    {"--plain", "", "The file is JSON in clear"},
    {"--dry-run", "", "Show what would change, and change nothing"},
}};

std::string known_commands() {
    std::string names;
    for (const Command& command : commands()) {
        names += names.empty() ? "" : &command == &commands().back() ? " and " : ", ";
        names += command.name;
    }
    return names;
}

const Command& find_command(const std::string& name) {
    const auto found = std::ranges::find(commands(), name, &Command::name);
    if (found == commands().end()) {
        throw UsageError("unknown command '" + name + "': the commands are " + known_commands());
    }
    return *found;
}

[[noreturn]] void refuse_option(const std::string& name) {
    throw UsageError("unknown option '" + name + "'" +
                     (name == "--password"
                          ? ": a password is given by --prompt, --password-file or "
                            "--password-stdin, since others can read arguments"
                          : ""));
}

bool is_help(std::string_view word) {
    return word == "--help" || word == "-h";
}

/// Adds an option, or a word, that may be given once. An option that takes no value is "true" to
/// the parser.
void add(CLI::App& parser, const std::string& name, bool takesValue, bool isRequired,
         std::optional<std::string>& value) {
    const auto take = [=, &value](const CLI::results_t& given) {
        const bool is_option = name.starts_with('-') && given.front().starts_with("--");
        const char* const fault = given.size() > 1 ? " is given more than once"
                                  : !takesValue && given.front() != "true" ? " takes no value"
                                  : is_option ? " needs a value, which cannot begin with --"
                                              : nullptr;
        if (fault != nullptr) {
            throw UsageError(name + fault);
        }
        value = given.front();
        return true;
    };
    parser.add_option(name, take)
        ->expected(takesValue ? 1 : 0)
        ->required(isRequired)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

/// The words from the last to the first, as the parser takes them. It would look for an empty value
/// (`--name=`) in the word that follows.
std::vector<std::string> reversed(std::span<const std::string> words) {
    std::vector<std::string> turned;
    std::for_each(words.rbegin(), words.rend(), [&turned](const std::string& word) {
        const bool is_empty_value = word.starts_with("--") && word.find('=') == word.size() - 1;
        if (is_empty_value) {
            turned.emplace_back();
        }
        turned.push_back(word.substr(0, word.size() - (is_empty_value ? 1 : 0)));
    });
    return turned;
}

/// Throws UsageError for the first word that has no place. A "--" in front ended the options.
void refuse(const std::vector<std::string>& words) {
    const std::size_t first = !words.empty() && words.front() == "--" ? 1 : 0;
    if (first == words.size()) {
        return;
    }
    const std::string& word = words[first];
    if (first == 0 && word.starts_with('-') && word != "-") {
        refuse_option(word.substr(0, word.find('=')));
    }
    throw UsageError("unexpected argument '" + word + "'");
}

std::string program_version() {
    return "vdcertificates " ORVA_VERSION "\n";
}

} // namespace

const OptionDefinition& definition(Option option) {
    return definitions[static_cast<std::size_t>(option)];
}

Arguments::Arguments(const Command& command, std::span<const std::string> words)
    : command_(command) {
    CLI::App parser;
    parser.set_help_flag();
    parser.allow_windows_style_options(false);
    if (!command.word.empty()) {
        add(parser, std::string(command.word), true, command.word_is_required, word_);
    }
    for (const OptionUse& use : command.options) {
        const OptionDefinition& option = definition(use.option);
        add(parser, std::string(option.name), !option.type.empty(), use.is_required,
            values_[static_cast<std::size_t>(use.option)]);
    }
    try {
        parser.parse(reversed(words));
    } catch (const CLI::ArgumentMismatch&) { // the words ended
        throw UsageError(words.back() + " needs a value");
    } catch (const CLI::ParseError& error) {
        refuse(parser.remaining());
        throw UsageError(error.what());
    }
}

const std::string& Arguments::text(Option option) const noexcept {
    static const std::string empty;
    return value(option) ? *value(option) : empty;
}

ExitStatus run_command_line(const std::vector<std::string>& words) {
    if (words.empty()) {
        throw UsageError("a command is missing: one of " + known_commands() +
                         " (vdcertificates --help tells more)");
    }
    const std::string& first = words.front();
    if (is_help(first) || first == "--version") {
        if (words.size() > 1) {
            throw UsageError("unexpected argument '" + words[1] + "'");
        }
        print(is_help(first) ? program_help() : program_version());
        return status_done;
    }
    if (first.starts_with('-')) {
        refuse_option(first);
    }
    if (first == "help") {
        print(words.size() == 1 ? program_help() : command_help(find_command(words[1])));
        return status_done;
    }
    const Command& command = find_command(first);
    const std::span<const std::string> rest(words.begin() + 1, words.end());
    if (std::ranges::any_of(rest, is_help)) {
        print(command_help(command));
        return status_done;
    }
    return command.run(Arguments(command, rest));
}

} // namespace tool
