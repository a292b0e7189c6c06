#pragma once

#include <cstdint>
#include <string>

namespace qnxml {

/// Returns whether the start of a document may be XML: whether its first character is "<".
/// Recognises UTF-8, UTF-16 and UCS-4 by a byte order mark or by their zero bytes. Blocks of fewer
/// than 32 bytes never pass and touch no output. Either output may be null.
///
/// `hasDeclaration` receives whether there is an XML declaration. `encoding` receives the name that
/// the declaration gives, else the encoding recognised, "UTF-8" if there is none; also if the block
/// does not pass, unless its mark and its zero bytes disagree.
///
/// Throws error.qnxml if the declaration names an encoding other than the one recognised, and
/// error.qncore.embeddedNul if that name contains a zero.
bool check_xml(const void* data, std::uint64_t size, bool* hasDeclaration, std::string* encoding);

} // namespace qnxml
