#pragma once

#include <cstdint>
#include <string>

namespace qnxml {

/// Returns whether the start of a document may be XML: whether its first character is "<".
/// Recognises UTF-8, UTF-16 and UCS-4 by a byte order mark or by their zero bytes. For blocks of
/// fewer than 32 bytes returns false and changes no output. Either output may be null.
///
/// `hasDeclaration` receives whether there is an XML declaration. `encoding` receives the name in
/// the declaration, else the encoding recognised, else "UTF-8"; also if the result is false, unless
/// the mark and the zero bytes disagree.
///
/// Throws error.qnxml if the declaration names an encoding other than the one recognised, and
/// error.qncore.embeddedNul if that name contains a zero.
bool check_xml(const void* data, std::uint64_t size, bool* hasDeclaration, std::string* encoding);

} // namespace qnxml
