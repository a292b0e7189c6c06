#pragma once

#include <string>

#include "tools/vdcertificates/command_line.h"
#include "tools/vdcertificates/entry.h"
#include "tools/vdcertificates/output.h"
#include "tools/vdcertificates/password_source.h"

// What several commands take from their arguments. All throw UsageError.
namespace tool {

/// The role and the server that a call is about.
struct Target {
    const Role& role;
    std::string server;

    std::string title() const { return tool::title(role, server); }
};

/// From ROLE and --server. The server of an entry that is to be stored must be one that the file
/// can keep.
Target target_of(const Arguments& arguments, bool toBeStored);

Format format_of(const Arguments& arguments);

/// Which of the password options was given.
PasswordSource password_source_of(const Arguments& arguments);

/// Reads the password from the source that was given.
Secret password_of(const Arguments& arguments);

/// Checks the texts of an entry that is to be stored; what the user knows each by begins with
/// `before`.
void check_entry(const Entry& entry, const std::string& before);

/// Tells on standard error that a path of the entry is relative.
void warn_of_relative_paths(const Entry& entry);

/// True for a path that each program takes from its own directory.
bool is_relative(const std::string& path);

/// Tells on standard error that there is no such entry, and returns that status.
ExitStatus no_entry(const Target& target);

} // namespace tool
