#include "tools/vdcertificates/command_line.h"

#include <algorithm>

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

bool is_help(std::string_view word) {
    return word == "--help" || word == "-h";
}

/// The value that comes next, which must not look like an option.
const std::string& next_value(std::string_view name, std::span<const std::string>& rest) {
    if (rest.empty() || rest.front().starts_with("--")) {
        throw UsageError(std::string(name) + " needs a value");
    }
    const std::string& value = rest.front();
    rest = rest.subspan(1);
    return value;
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
    bool options_ended = false;
    while (!words.empty()) {
        const std::string& word = words.front();
        words = words.subspan(1);
        if (!options_ended && word == "--") {
            options_ended = true;
        } else if (options_ended || !word.starts_with('-') || word == "-") {
            take_word(word);
        } else if (const std::size_t end = word.find('='); end != std::string::npos) {
            const std::string attached = word.substr(end + 1);
            take_option(std::string_view(word).substr(0, end), words, &attached);
        } else {
            take_option(word, words, nullptr);
        }
    }
    if (command.word_is_required && !word_) {
        throw UsageError(std::string(command.word) + " is required");
    }
    for (const OptionUse& use : command.options) {
        if (use.is_required && !has(use.option)) {
            throw UsageError(std::string(definition(use.option).name) + " is required");
        }
    }
}

void Arguments::take_word(const std::string& word) {
    if (command_.word.empty() || word_) {
        throw UsageError("unexpected argument '" + word + "'");
    }
    word_ = word;
}

void Arguments::take_option(std::string_view name, std::span<const std::string>& rest,
                            const std::string* attached) {
    const auto found = std::ranges::find_if(command_.options, [name](const OptionUse& use) {
        return definition(use.option).name == name;
    });
    const std::string shown(name);
    if (found == command_.options.end()) {
        throw UsageError("unknown option '" + shown + "'");
    }
    const bool is_flag = definition(found->option).type.empty();
    if (is_flag && attached != nullptr) {
        throw UsageError(shown + " takes no value");
    }
    std::optional<std::string>& value = values_[static_cast<std::size_t>(found->option)];
    if (value) {
        throw UsageError(shown + " is given more than once");
    }
    value = is_flag ? std::string() : attached != nullptr ? *attached : next_value(name, rest);
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
        throw UsageError("unknown option '" + first + "'");
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
