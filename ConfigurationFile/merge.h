#pragma once

#include <string>

#include "ConfigurationFile/certificate_node.h"

namespace vdcertificates {

class PasswordCipher;

/// Overwrites every existing entry that has the name of a new one, under every spelling of its
/// server, and appends the others. Existing spellings stay; the case of ASCII letters is ignored.
void merge(const ConfigurationFileNodes& newNodes, ConfigurationFileNodes& existingNodes);

/// Appends the text of one section as the file holds it, passwords enciphered.
void append_section(std::string& text, const std::string& nodeName,
                    const ConfigurationFileNodes& nodes, PasswordCipher& cipher);

} // namespace vdcertificates
