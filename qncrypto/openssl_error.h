#pragma once

#include "qncore/error_info.h"

namespace qncrypto {

/// Removes up to `maxDepth` entries from OpenSSL's error queue of this thread and returns them as a
/// chain of records with the code "error.qncrypto.openssl" and OpenSSL's locations, the oldest
/// entry outermost; null if the queue is empty. Call it directly after the failed call.
qncore::ErrorInfoPtr openssl_error_info(int maxDepth);

/// The depth that callers pass.
inline constexpr int openssl_error_depth = 32;

/// True if the chain holds an OpenSSL error of OpenSSL itself, such as a lack of memory, rather
/// than of its input.
bool is_openssl_fault(const qncore::ErrorInfoPtr& info);

/// Throws an error with OpenSSL's queue as its cause.
[[noreturn]] void throw_openssl_error(const qncore::ErrorCode& code, const char* text,
                                      const qncore::SourceLocation& location);

/// Delivers the same error to a slot, see qncore::deliver_error().
void deliver_openssl_error(qncore::ErrorInfoPtr* error, const qncore::ErrorCode& code,
                           const char* text, const qncore::SourceLocation& location);

} // namespace qncrypto
