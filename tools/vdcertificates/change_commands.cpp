#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/requests.h"
#include "tools/vdcertificates/text_checks.h"
#include "tools/vdcertificates/transaction.h"

namespace tool {
namespace {

using vdcertificates::CertificateNode;

struct FieldOption {
    Option option;
    std::string CertificateNode::*field;
};
constexpr FieldOption field_options[] = {
    {Option::public_key, &CertificateNode::publicKeyPath},
    {Option::private_key, &CertificateNode::privateKeyPath},
    {Option::certificate, &CertificateNode::certificatePath},
    {Option::trusted, &CertificateNode::trustedCertificatePath},
};

/// Sets the fields that were given.
void apply_fields(const Arguments& arguments, Entry& entry) {
    for (const FieldOption& given : field_options) {
        if (arguments.has(given.option)) {
            entry.node.*given.field = arguments.text(given.option);
        }
    }
}

void apply_password(const Secret& password, Entry& entry) {
    wipe(entry.node.password);
    entry.node.password = password.text();
}

Entry new_entry(const Target& target) {
    Entry entry;
    entry.section = &target.role.section;
    entry.by_server = target.role.by_server;
    entry.server = target.server;
    entry.node.name = target.role.element;
    return entry;
}

/// Checks only the fields that were given: an update must not fail because of older content.
void check_given(const Arguments& arguments, const Role& role) {
    if (arguments.has(Option::trusted) && !role.has_trusted_path) {
        throw UsageError("the role " + std::string(role.name) + " takes no --trusted");
    }
    for (const FieldOption& given : field_options) {
        const std::string& text = arguments.text(given.option);
        const std::string name(definition(given.option).name);
        if (arguments.has(given.option) && given.option == Option::trusted) {
            check_trusted_path(name, text);
        } else if (arguments.has(given.option)) {
            check_path(name, text);
        }
    }
}

ExitStatus store(Transaction& change, Entry&& entry) {
    warn_of_relative_paths(entry);
    change.contents().place(std::move(entry));
    change.commit();
    return status_done;
}

bool changes_something(const Arguments& arguments) {
    using enum Option;
    for (const Option option : {public_key, private_key, certificate, trusted, password_stdin,
                                password_file, prompt, no_password}) {
        if (arguments.has(option)) {
            return true;
        }
    }
    return false;
}

ExitStatus remove_role(const Arguments& arguments) {
    const Target target = target_of(arguments, false);
    Transaction change(arguments.has(Option::discard_unreadable));
    if (change.contents().remove(target.role, target.server) == 0) {
        return no_entry(target);
    }
    change.commit();
    return status_done;
}

ExitStatus remove_server(const Arguments& arguments) {
    const std::string& server = arguments.text(Option::server);
    check_searched_name("--server", server);
    Transaction change(arguments.has(Option::discard_unreadable));
    std::size_t count = 0;
    for (const Role& role : roles()) {
        count += role.by_server ? change.contents().remove(role, server) : 0;
    }
    if (count == 0) {
        print_error("there is no entry for the server " + server);
        return status_no_entry;
    }
    change.commit();
    return status_done;
}

} // namespace

ExitStatus run_set(const Arguments& arguments) {
    const Target target = target_of(arguments, true);
    check_given(arguments, target.role);
    Entry entry = new_entry(target);
    apply_fields(arguments, entry);
    apply_password(password_of(arguments), entry);
    Transaction change(arguments.has(Option::discard_unreadable));
    return store(change, std::move(entry));
}

ExitStatus run_update(const Arguments& arguments) {
    Target target = target_of(arguments, false);
    if (!changes_something(arguments)) {
        throw UsageError("nothing to update: give at least one field or password option");
    }
    check_given(arguments, target.role);
    const bool has_password =
        password_source_of(arguments) != PasswordSource::none || arguments.has(Option::no_password);
    const Secret password = password_of(arguments);
    Transaction change(arguments.has(Option::discard_unreadable));
    const Contents::Node* stored = change.contents().find(target.role, target.server);
    if (stored == nullptr) {
        return no_entry(target);
    }
    Entry entry = new_entry(target);
    entry.node = *stored;
    apply_fields(arguments, entry);
    if (has_password) {
        apply_password(password, entry);
    }
    return store(change, std::move(entry));
}

ExitStatus run_remove(const Arguments& arguments) {
    if (arguments.word() && arguments.has(Option::all_roles)) {
        throw UsageError("ROLE and --all-roles exclude each other");
    }
    if (arguments.word()) {
        return remove_role(arguments);
    }
    if (!arguments.has(Option::all_roles) || !arguments.has(Option::server)) {
        throw UsageError("ROLE is required, or --server with --all-roles");
    }
    return remove_server(arguments);
}

ExitStatus run_restore(const Arguments& arguments) {
    restore_previous(arguments.has(Option::discard_unreadable));
    return status_done;
}

} // namespace tool
