#pragma once

#include <string>
#include <string_view>

namespace qnfile {

/// Undoes percent-encoding (RFC 3986, section 2.1): `%` and two hexadecimal digits give one byte;
/// a `%` without them stays as it is.
std::string percent_decode(std::string_view text);

} // namespace qnfile
