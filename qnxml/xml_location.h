#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "qncore/error_params.h"
#include "qnuri/uri_reference.h"

namespace qnxml {

/// The position of a tokenizer in its source, after all consumed data.
struct XmlLocation {
    qnuri::UriReference uri;     ///< of the source; may be empty
    std::uint32_t line = 0;      ///< counted from the number given to the tokenizer
    std::uint64_t linePos = 0;   ///< bytes since the start of the line, from 0
    std::uint64_t sourcePos = 0; ///< bytes taken from the source, from 0
};

/// Adds `uri`, `line`, `linePos` and `sourcePos` unless `params` is null.
void add_location_params(const XmlLocation& location, qncore::ErrorParams* params);

/// Returns the template of a message about a place, "[line {@line}, pos {@linePos}]: " and the
/// text, with ", uri <{@uri}>" after the position if there is a URI. Adds the parameters as above.
std::string location_message(const XmlLocation& location, std::string_view text,
                             qncore::ErrorParams* params);

/// The same layout with the values written out.
std::string format_location(const XmlLocation& location, std::string_view text);

} // namespace qnxml
