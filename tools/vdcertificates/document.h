#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ConfigurationFile/password_cipher.h"
#include "tools/vdcertificates/entry.h"

namespace tool {

/// The result of reading a file: faults, and content other than entries.
struct Reading {
    /// True if a change that rewrites the entries loses nothing.
    bool is_whole() const {
        return fault.empty() && root_is_right && ignored.empty() && unreadable_passwords.empty();
    }

    bool file_exists = false;
    bool file_is_empty = false;
    bool root_is_right = true;  ///< or there is no document
    std::string root;           ///< the name of the document's first element
    std::string fault;          ///< what ended the reading; empty if it reached the end
    std::string last_entry;     ///< the title of the last entry before that
    std::string password_fault; ///< the fault of the first unreadable password
    std::vector<std::string> unreadable_passwords; ///< titles of their entries
    std::vector<std::string> ignored;              ///< elements without a meaning
};

using EntryVisitor = std::function<void(Entry&&)>;

/// Reads a configuration file once, by the rules of the library, and passes on each complete entry.
/// Unlike the library it continues after a password that `cipher` cannot decipher; without a cipher
/// it skips passwords. Shows the progress of a long reading if standard error is a terminal. The
/// caller must hold the machine-wide lock. Throws Failure if the file exists and cannot be opened.
Reading read_document(const std::string& path, vdcertificates::PasswordCipher* cipher,
                      const EntryVisitor& visit);

} // namespace tool
