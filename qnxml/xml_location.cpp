#include "qnxml/xml_location.h"

#include "qncore/string_conversion.h"

namespace qnxml {

namespace {

std::string laid_out(std::string_view line, std::string_view position, std::string_view uri,
                     std::string_view text) {
    std::string message("[line ");
    message.append(line).append(", pos ").append(position);
    if (!uri.empty()) {
        message.append(", uri <").append(uri).append(">");
    }
    message.append("]: ").append(text);
    return message;
}

} // namespace

void add_location_params(const XmlLocation& location, qncore::ErrorParams* params) {
    if (params == nullptr) {
        return;
    }
    params->insert("uri", location.uri.text());
    params->insert("line", location.line);
    params->insert("linePos", location.linePos);
    params->insert("sourcePos", location.sourcePos);
}

std::string location_message(const XmlLocation& location, std::string_view text,
                             qncore::ErrorParams* params) {
    add_location_params(location, params);
    return laid_out("{@line}", "{@linePos}", location.uri.text().empty() ? "" : "{@uri}", text);
}

std::string format_location(const XmlLocation& location, std::string_view text) {
    return laid_out(qncore::to_string(location.line), qncore::to_string(location.linePos),
                    location.uri.text(), text);
}

} // namespace qnxml
