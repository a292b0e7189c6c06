#pragma once

#include <string>
#include <string_view>

#include "qncore/streams.h"

// Escaping of texts for a document (XML 1.0, section 2.4). All other bytes are copied unchanged; an
// apostrophe is not escaped.
namespace qnxml {

/// For a value in double quotes: `"`, `&` and `<` become references.
void write_escaped_attribute_value(qncore::IWriteStream& stream, std::string_view text);
std::string escape_attribute_value(std::string_view text);

/// For content: `&`, `<` and `>` become references.
void write_escaped_text(qncore::IWriteStream& stream, std::string_view text);
std::string escape_text(std::string_view text);

/// Writes a blank, the name, "=" and the escaped value in double quotes.
void write_attribute(qncore::IWriteStream& stream, std::string_view name, std::string_view value);

} // namespace qnxml
