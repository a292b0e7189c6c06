#pragma once

#include <string_view>

#include "tools/vdcertificates/secret.h"

namespace tool {

/// Encrypts a text with a password: S/MIME with CMS enveloped data for a password recipient
/// (RFC 5652, section 6.2.4; PBKDF2 of RFC 8018, AES-256). Throws Failure.
Secret encipher_for_password(std::string_view text, const Secret& password);

/// The inverse, also for PEM and DER. Throws Failure, also for a wrong password.
Secret decipher_with_password(std::string_view message, const Secret& password);

} // namespace tool
