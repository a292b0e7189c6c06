#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/findings.h"
#include "tools/vdcertificates/requests.h"
#include "tools/vdcertificates/store.h"

namespace tool {
namespace {

using vdcertificates::ConfigurationFile;

constexpr std::size_t name_width = 16; ///< of the longest one, and two blanks

/// The rule that determined the root directory.
std::string root_rule(const std::string& root) {
    if (root.empty()) {
        return "neither the machine's setting nor a user's profile names a directory";
    }
    return root == machine_setting()
               ? "the machine's setting in " + platform::machine_setting_source()
               : "the user's profile";
}

struct Answer {
    std::string file;
    KeyFiles keys;
    Findings findings;
    std::optional<Failure> failure; ///< the first thing that could not be found out
};

/// The paths that the library uses, or would use if it could start.
Answer find() {
    Answer answer;
    answer.keys = key_files();
    try {
        const Store store;
        answer.file = store.path();
        answer.findings.add_remarks(store);
    } catch (const Failure& failure) {
        answer.failure = failure;
        answer.file = named_file();
        if (answer.file.empty()) {
            answer.file = answer.keys.directory + platform::preferred_separator +
                          vdcertificates::get_local_machine_name() + "_" +
                          ConfigurationFile::sm_configurationFileName;
        }
    }
    return answer;
}

struct Line {
    const char* key;
    const char* name;
    std::string value;
    std::optional<bool> exists = std::nullopt; ///< what it names, if it names a file
};

std::array<Line, 5> lines_of(Answer& answer) {
    const auto exists = [&](const std::string& path) -> std::optional<bool> {
        const auto found = existence(path);
        if (!found && !answer.failure) {
            answer.failure = refused_look(path, found.error());
        }
        return found ? std::optional(*found) : std::nullopt;
    };
    const std::string rule =
        answer.file == named_file()
            ? "the environment variable " +
                  ConfigurationFile::sm_configurationFilePathEnvironmentVariable
            : "the directory of the keys";
    const KeyFiles& keys = answer.keys;
    return {{
        {"file", "file", answer.file, exists(answer.file)},
        {"file_chosen_by", "file chosen by", rule},
        {"public_key", "public key", keys.public_key, exists(keys.public_key)},
        {"private_key", "private key", keys.private_key, exists(keys.private_key)},
        {"keys_chosen_by", "keys chosen by", root_rule(keys.directory)},
    }};
}

void append_json(Output& output, const std::array<Line, 5>& lines, Answer& answer) {
    JsonWriter json(output.text());
    json.begin('{');
    for (const Line& line : lines) {
        json.key(line.key);
        json.value(line.value);
        if (line.exists) {
            json.key(std::string(line.key) + "_exists");
            json.value(*line.exists);
        }
    }
    if (answer.failure) {
        answer.findings.add(*answer.failure);
    }
    json.key("findings");
    json.begin('[');
    answer.findings.append(json);
    json.end();
    json.end();
    output << "\n";
}

void append_lines(Output& output, const std::array<Line, 5>& lines, const Answer& answer) {
    for (const Line& line : lines) {
        const bool is_missing = line.exists && !*line.exists;
        append_line(output, line.name, line.value + (is_missing ? " (not there yet)" : ""),
                    name_width);
    }
    answer.findings.append(output);
}

} // namespace

ExitStatus run_where(const Arguments& arguments) {
    const bool is_json = format_of(arguments) == Format::json;
    Answer answer = find();
    const std::array<Line, 5> lines = lines_of(answer);
    Output output;
    is_json ? append_json(output, lines, answer) : append_lines(output, lines, answer);
    output.flush();
    if (answer.failure) {
        throw Failure(*answer.failure);
    }
    return status_done;
}

} // namespace tool
