#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "qncore/error_params.h"
#include "qnuri/uri_reference.h"

namespace qnxml {

/// Where a tokenizer stands in its source, behind everything that it has consumed.
struct XmlLocation {
    qnuri::UriReference uri;     ///< of the source; may be empty
    std::uint32_t line = 0;      ///< from the number that the tokenizer was given for the first one
    std::uint64_t linePos = 0;   ///< bytes since the start of the line, from 0
    std::uint64_t sourcePos = 0; ///< bytes taken from the source, from 0
};

/// Adds `uri`, `line`, `linePos` and `sourcePos`; null takes nothing.
void add_location_params(const XmlLocation& location, qncore::ErrorParams* params);

/// The four parameters alone.
qncore::ErrorParams location_params(const XmlLocation& location);

/// The template of a message about that place, "[line {@line}, pos {@linePos}]: " and the text,
/// with ", uri <{@uri}>" behind the position when there is a URI. Adds the parameters.
std::string location_message(const XmlLocation& location, std::string_view text,
                             qncore::ErrorParams* params);

/// The same layout with the values written out.
std::string format_location(const XmlLocation& location, std::string_view text);

} // namespace qnxml
