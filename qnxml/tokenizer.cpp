#include "qnxml/tokenizer.h"

#include "qnxml/enum_name.h"

namespace qnxml {

std::ostream& operator<<(std::ostream& stream, XmlTokenType token) {
    static constexpr std::array<std::string_view, 23> names{
        "Unknown",          "DocumentStart", "DocumentEnd",    "Error",
        "XmldeclStart",     "XmldeclEnd",    "DoctypeStart",   "DoctypeEnd",
        "CommentStart",     "CommentEnd",    "PIStart",        "PIEnd",
        "CDATAStart",       "CDATAEnd",      "StartTagStart",  "StartTagEnd",
        "StartTagEndEmpty", "EndTag",        "AttributeStart", "AttributeEnd",
        "CharData",         "EntityRef",     "CharRef"};
    return impl::write_enum_name(stream, token, names);
}

} // namespace qnxml
