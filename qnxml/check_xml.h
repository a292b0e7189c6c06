#pragma once

#include <cstdint>
#include <string>

namespace qnxml {

/// Tells whether the start of a document passes as XML, before anyone parses it: whether its first
/// character is "<". UTF-8, UTF-16 and UCS-4 are recognised, by a mark or by their zero bytes.
/// Blocks of less than 32 bytes never pass, and touch no output. Either output may be null.
///
/// `hasDeclaration` tells of an XML declaration. `encoding` receives the name that the declaration
/// gives, else that of the encoding recognised, "UTF-8" when there is none; also when the block
/// does not pass, unless its mark and its zero bytes disagree.
///
/// Throws error.qnxml when the declaration names another encoding than the one recognised, and
/// error.qncore.embeddedNul when that name holds a zero.
bool check_xml(const void* data, std::uint64_t size, bool* hasDeclaration, std::string* encoding);

} // namespace qnxml
