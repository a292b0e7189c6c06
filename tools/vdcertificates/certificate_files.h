#pragma once

#include "tools/vdcertificates/findings.h"

namespace tool {

/// Checks the files that an entry names (PEM or DER) and reports findings: each file exists, is
/// readable and not writable for every account; the certificate is valid today and for `days` more;
/// the private key opens with the stored password and belongs to the certificate and the public
/// key; the certificate verifies against the trusted one (RFC 5280, section 6; any trusted
/// certificate may end the chain).
void check_certificate_files(const Entry& entry, int days, Findings& findings);

} // namespace tool
