#pragma once

#include <functional>
#include <string>

#include "ConfigurationFile/certificate_node.h"

namespace vdcertificates {

class PasswordCipher;

/// Overwrites every existing entry that has the name of a new one, under every spelling of its
/// server, and appends the others. Existing spellings stay; the case of ASCII letters is ignored.
void merge(const ConfigurationFileNodes& newNodes, ConfigurationFileNodes& existingNodes);

/// Appends the text of one section as the file holds it, passwords enciphered. Calls `afterServer`,
/// if any, after the entries of each server; it may take away what `text` holds.
void append_section(std::string& text, const std::string& nodeName,
                    const ConfigurationFileNodes& nodes, PasswordCipher& cipher,
                    const std::function<void()>& afterServer = nullptr);

} // namespace vdcertificates
