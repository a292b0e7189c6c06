#pragma once

#include "tools/vdcertificates/findings.h"

namespace tool {

/// Opens the files that an entry names and says what is wrong with them: each is there, readable
/// and not for everyone to change; the certificate is valid today and for `days` more; the private
/// key opens with the stored password and belongs to the certificate and the public key; the
/// certificate verifies against the trusted one (RFC 5280, section 6; any trusted certificate may
/// end the chain). PEM and DER.
void check_certificate_files(const Entry& entry, int days, Findings& findings);

} // namespace tool
