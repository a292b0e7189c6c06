#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ConfigurationFile/password_cipher.h"
#include "tools/vdcertificates/entry.h"

namespace tool {

/// How a file was read, and what of it is no entry.
struct Reading {
    /// True when a change that writes the entries again loses nothing.
    bool is_whole() const {
        return fault.empty() && root_is_right && ignored.empty() && unreadable_passwords.empty();
    }

    bool file_exists = false;
    bool file_is_empty = false;
    bool root_is_right = true;  ///< or there is no document
    std::string root;           ///< the name of the document's first element
    std::string fault;          ///< what ended the reading; empty when it came to the end
    std::string last_entry;     ///< the title of the last entry before that
    std::string password_fault; ///< what was wrong with the first unreadable password
    std::vector<std::string> unreadable_passwords; ///< titles of their entries
    std::vector<std::string> ignored;              ///< elements that have no meaning
};

using EntryVisitor = std::function<void(Entry&&)>;

/// Reads a configuration file once, by the rules of the library, and hands over each entry when it
/// is whole. Unlike the library it reads on after a password that `cipher` cannot decipher;
/// without a cipher it skips passwords. A terminal at standard error sees the progress of a long
/// reading. The caller holds the machine-wide lock. Throws Failure when the file exists and cannot
/// be opened.
Reading read_document(const std::string& path, vdcertificates::PasswordCipher* cipher,
                      const EntryVisitor& visit);

} // namespace tool
