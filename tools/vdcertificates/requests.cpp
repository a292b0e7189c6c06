#include "tools/vdcertificates/requests.h"

#include "tools/vdcertificates/native_path.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {

namespace {

const Role& role_of(const Arguments& arguments) {
    const Role* role = find_role(*arguments.word());
    if (role == nullptr) {
        throw UsageError("unknown role '" + *arguments.word() + "': the roles are " + role_names());
    }
    return *role;
}

} // namespace

Target target_of(const Arguments& arguments, bool toBeStored) {
    const Role& role = role_of(arguments);
    const std::string name(role.name);
    const bool given = arguments.has(Option::server);
    if (role.by_server && !given) {
        throw UsageError("the role " + name + " needs --server");
    }
    if (!role.by_server && given) {
        throw UsageError("the role " + name + " takes no --server: there is one for the machine");
    }
    if (given && toBeStored) {
        check_server_name("--server", arguments.text(Option::server));
    } else if (given) {
        check_searched_name("--server", arguments.text(Option::server));
    }
    return {role, arguments.text(Option::server)};
}

Format format_of(const Arguments& arguments) {
    const std::string& name = arguments.text(Option::format);
    if (arguments.has(Option::format) && name != "text" && name != "json") {
        throw UsageError("unknown format '" + name + "': the formats are text and json");
    }
    return name == "json" ? Format::json : Format::text;
}

PasswordSource password_source_of(const Arguments& arguments) {
    using enum Option;
    if (arguments.has(password_stdin) + arguments.has(password_file) + arguments.has(prompt) +
            arguments.has(no_password) >
        1) {
        throw UsageError(
            "--password-stdin, --password-file, --prompt and --no-password exclude each other");
    }
    return arguments.has(password_stdin)  ? PasswordSource::standard_input
           : arguments.has(password_file) ? PasswordSource::file
           : arguments.has(prompt)        ? PasswordSource::prompt
                                          : PasswordSource::none;
}

Secret password_of(const Arguments& arguments) {
    return read_password(password_source_of(arguments), arguments.text(Option::password_file));
}

void check_entry(const Entry& entry, const std::string& before) {
    if (entry.by_server) {
        check_server_name(before + "server", entry.server);
    }
    check_path(before + "public-key", entry.node.publicKeyPath);
    check_path(before + "private-key", entry.node.privateKeyPath);
    check_path(before + "certificate", entry.node.certificatePath);
    check_trusted_path(before + "trusted", entry.node.trustedCertificatePath);
}

bool is_relative(const std::string& path) {
    return !path.empty() && !native_path(path).has_root_directory();
}

void warn_of_relative_paths(const Entry& entry) {
    const auto& node = entry.node;
    for (const std::string& path : {node.publicKeyPath, node.privateKeyPath, node.certificatePath,
                                    node.trustedCertificatePath}) {
        if (is_relative(path)) {
            print_error("warning: the path " + path +
                        " is relative: each program takes it from its own directory");
        }
    }
}

ExitStatus no_entry(const Target& target) {
    print_error("there is no entry of the role " + std::string(target.role.name) +
                (target.role.by_server ? " for the server " + target.server : ""));
    return status_no_entry;
}

} // namespace tool
