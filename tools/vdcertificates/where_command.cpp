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

/// Which rule gave the root directory.
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
};

/// What the library uses; where it cannot start, what it would use.
Answer find() {
    Answer answer;
    answer.keys = key_files();
    try {
        const Store store;
        answer.file = store.path();
        for (const std::string& made : store.made()) {
            answer.findings.add(Severity::note, "made", made);
        }
        for (const std::string& warned : store.warnings()) {
            answer.findings.add(Severity::warning, "used_elsewhere", warned);
        }
    } catch (const Failure& failure) {
        answer.findings.add(failure);
        answer.file = named_file();
        if (answer.file.empty()) {
            answer.file = answer.keys.directory + platform::preferred_separator +
                          vdcertificates::get_local_machine_name() + "_" +
                          ConfigurationFile::sm_configurationFileName;
        }
    }
    return answer;
}

} // namespace

ExitStatus run_where(const Arguments& arguments) {
    const Format format = format_of(arguments);
    const Answer answer = find();
    struct Line {
        const char* key;
        const char* name;
        std::string value;
        bool is_file;
    };
    const std::array<Line, 5> lines{{
        {"file", "file", answer.file, true},
        {"file_chosen_by", "file chosen by",
         answer.file == named_file()
             ? "the environment variable " +
                   ConfigurationFile::sm_configurationFilePathEnvironmentVariable
             : "the directory of the keys",
         false},
        {"public_key", "public key", answer.keys.public_key, true},
        {"private_key", "private key", answer.keys.private_key, true},
        {"keys_chosen_by", "keys chosen by", root_rule(answer.keys.directory), false},
    }};
    if (format == Format::json) {
        Output output;
        JsonWriter json(output.text());
        json.begin('{');
        for (const Line& line : lines) {
            json.key(line.key);
            json.value(line.value);
            if (line.is_file) {
                json.key(std::string(line.key) + "_exists");
                json.value(!platform::check_existence(line.value));
            }
        }
        json.key("findings");
        answer.findings.append(json);
        json.end();
        output << "\n";
        output.flush();
        return answer.findings.status();
    }
    Output output;
    for (const Line& line : lines) {
        const bool is_missing =
            line.is_file && platform::check_existence(line.value).is_not_found();
        append_line(output, line.name, line.value + (is_missing ? " (not there yet)" : ""),
                    name_width);
    }
    output.flush();
    return answer.findings.print(Format::text);
}

} // namespace tool
