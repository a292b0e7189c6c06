#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/output.h"
#include "tools/vdcertificates/roles.h"

namespace tool {
namespace {

// The script asks the program for the stored servers when they are needed.
constexpr std::string_view list_servers =
    "vdcertificates list 2>/dev/null | cut -f 2 | sort -u | grep .";

/// The possible values of the WORD of a command, each followed by a blank; empty for a file.
std::string choices_of(const Command& command) {
    std::string words = command.word == "SHELL" ? "bash zsh fish " : "";
    if (command.word == "ROLE") {
        for (const Role& role : roles()) {
            words += std::string(role.name) + " ";
        }
    }
    return words;
}

/// The words after each command: its options, and the values of its WORD.
std::string words_of(const Command& command) {
    std::string words = choices_of(command);
    for (const OptionUse& use : command.options) {
        words += std::string(definition(use.option).name) + " ";
    }
    return words + "--help";
}

std::string names() {
    std::string text;
    for (const Command& command : commands()) {
        text += std::string(command.name) + " ";
    }
    return text + "help --help --version";
}

std::string bash() {
    std::string script = "_vdcertificates() {\n"
                         "    local word=${COMP_WORDS[COMP_CWORD]} "
                         "before=${COMP_WORDS[COMP_CWORD-1]} words\n"
                         "    COMPREPLY=()\n"
                         "    case $before in\n"
                         "        --server)\n"
                         "            local server\n" // never as a pattern or a word list
                         "            while read -r server; do\n"
                         "                [[ $server == \"$word\"* ]] && "
                         "COMPREPLY+=(\"$(printf %q \"$server\")\")\n"
                         "            done < <(";
    script += list_servers;
    script +=
        ")\n"
        "            return ;;\n"
        "        --format) words='text json' ;;\n"
        "        --field) words='role server public_key private_key certificate trusted "
        "password' ;;\n"
        "        --days) return ;;\n"
        "        --public-key|--private-key|--certificate|--trusted|--password-file|--output"
        "|import)\n"
        "            compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- \"$word\"))\n"
        "            return ;;\n"
        "        *)\n"
        "            case ${COMP_WORDS[1]} in\n";
    for (const Command& command : commands()) {
        script += "                " + std::string(command.name) + ") words='" + words_of(command) +
                  "' ;;\n";
    }
    script += "            esac\n"
              "            [ \"$COMP_CWORD\" -gt 1 ] || words='" +
              names() +
              "' ;;\n"
              "    esac\n"
              "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
              "}\n"
              "complete -F _vdcertificates vdcertificates\n";
    return script;
}

std::string zsh() {
    return "#compdef vdcertificates\n"
           "autoload -U +X bashcompinit && bashcompinit\n" +
           bash() +
           // the first completion loads this file as the function of that name
           "[[ ${funcstack[1]-} != _vdcertificates ]] || _bash_complete -F _vdcertificates\n";
}

std::string fish() {
    std::string script = "complete -c vdcertificates -f\n";
    for (const Command& command : commands()) {
        const std::string name(command.name);
        const std::string here =
            "complete -c vdcertificates -n '__fish_seen_subcommand_from " + name + "' ";
        script += "complete -c vdcertificates -n __fish_use_subcommand -a " + name + " -d '" +
                  std::string(command.summary) + "'\n";
        if (const std::string choices = choices_of(command); !choices.empty()) {
            script += here + "-a '" + choices + "'\n";
        } else if (command.word == "FILE") {
            script += here + "-F\n";
        }
        for (const OptionUse& use : command.options) {
            const OptionDefinition& option = definition(use.option);
            script += here + "-l " + std::string(option.name.substr(2));
            if (use.option == Option::server) {
                script += " -x -a '(" + std::string(list_servers) + ")'";
            } else if (use.option == Option::format) {
                script += " -x -a 'text json'";
            } else if (option.type == "PATH" || option.type == "FILE") {
                script += " -r -F";
            } else if (!option.type.empty()) {
                script += " -x";
            }
            script += "\n";
        }
    }
    return script;
}

} // namespace

ExitStatus run_completion(const Arguments& arguments) {
    const std::string& shell = *arguments.word();
    if (shell != "bash" && shell != "zsh" && shell != "fish") {
        throw UsageError("unknown shell '" + shell + "': the shells are bash, zsh and fish");
    }
    print(shell == "bash" ? bash() : shell == "zsh" ? zsh() : fish());
    return status_done;
}

} // namespace tool
