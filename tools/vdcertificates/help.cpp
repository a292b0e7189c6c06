#include "tools/vdcertificates/help.h"

namespace tool {
namespace {

constexpr std::size_t column = 28;

constexpr std::string_view about =
    "Keeps the record of this machine's certificates: for each role, where its key and\n"
    "certificate files are, and the password that opens them.\n"
    "\n"
    "Usage: vdcertificates COMMAND [WORD] [OPTION...]\n"
    "\n"
    "Commands:\n";

constexpr std::string_view example =
    "\n"
    "There is one cluster certificate for the machine. Entries of every other role belong to\n"
    "the name of a server (--server), which is found whatever the case of its letters.\n"
    "\n"
    "Example:\n"
    "  vdcertificates set cluster --public-key /keys/cluster.pub \\\n"
    "      --private-key /keys/cluster.key --certificate /keys/cluster.crt --prompt\n"
    "  vdcertificates get cluster\n"
    "\n"
    "vdcertificates COMMAND --help tells more, and so does man vdcertificates.\n"
    "Exit status: 0 done, 1 failed, 2 wrong usage, 3 no such entry.\n";

/// `name` in one column, and `text`, of any number of lines, in the other.
void append_row(std::string& help, std::string_view name, std::string_view text) {
    std::string line = "  " + std::string(name);
    line.append(line.size() < column ? column - line.size() : 1, ' ');
    for (const char character : text) {
        line += character;
        if (character == '\n') {
            line.append(column, ' ');
        }
    }
    help += line + "\n";
}

} // namespace

std::string program_help() {
    std::string help(about);
    for (const Command& command : commands()) {
        append_row(help, command.name, command.summary);
    }
    return help.append(example);
}

std::string command_help(const Command& command) {
    std::string help = "Usage: vdcertificates " + std::string(command.name);
    if (!command.word.empty()) {
        const std::string word(command.word);
        help += command.word_is_required ? " " + word : " [" + word + "]";
    }
    help += command.options.empty() ? "\n\n" : " [OPTION...]\n\n";
    help.append(command.summary).append(".\n");
    if (!command.options.empty()) {
        help += "\nOptions:\n";
    }
    for (const OptionUse& use : command.options) {
        const OptionDefinition& option = definition(use.option);
        std::string name(option.name);
        name += option.type.empty() ? "" : " " + std::string(option.type);
        append_row(help, name, std::string(option.help) + (use.is_required ? " (required)" : ""));
    }
    return help.append("\n").append(command.notes);
}

} // namespace tool
