#pragma once

#include <string>

#include "tools/vdcertificates/command_line.h"
#include "tools/vdcertificates/entry.h"
#include "tools/vdcertificates/output.h"
#include "tools/vdcertificates/password_source.h"

// Arguments that several commands share. All functions throw UsageError.
namespace tool {

/// The role and the server of a call.
struct Target {
    const Role& role;
    std::string server;
};

/// Returns ROLE and --server. If an entry is to be stored, checks that the file can hold the server
/// name.
Target target_of(const Arguments& arguments, bool toBeStored);

Format format_of(const Arguments& arguments);

/// Returns which of the password options was given.
PasswordSource password_source_of(const Arguments& arguments);

/// Reads the password from the source that was given.
Secret password_of(const Arguments& arguments);

/// Checks the texts of an entry to be stored. Their names in messages begin with `before`.
void check_entry(const Entry& entry, const std::string& before);

/// Warns on standard error if a path of the entry is relative.
void warn_of_relative_paths(const Entry& entry);

/// True for a path that depends on the current directory.
bool is_relative(const std::string& path);

/// Reports on standard error that there is no such entry, and returns that status.
ExitStatus no_entry(const Target& target);

} // namespace tool
