#pragma once

#include <string_view>

#include "qncore/source_string.h"

namespace qncore {

/// The name of a kind of failure: a dotted path that begins with "error." and the layer, such as
/// "error.qnfile.io.open". Codes are constants in their room's errors.h; every prefix of a code
/// that ends before a dot is declared there, too (ctest error-codes).
class ErrorCode {
  public:
    /// Borrows a literal.
    constexpr explicit ErrorCode(const char* code) noexcept
        : path_(code) {}

    /// Borrows the text (`isStatic` true) or copies it.
    constexpr ErrorCode(const char* code, bool isStatic)
        : path_(isStatic ? SourceString(code) : SourceString(code, false)) {}

    std::string_view path() const noexcept { return path_.view(); }

    /// True if `other` is this code or below it: "error.a" covers "error.a.b" and not "error.ab".
    bool covers(const ErrorCode& other) const noexcept;

    friend bool operator==(const ErrorCode& left, const ErrorCode& right) noexcept {
        return left.path_ == right.path_;
    }

  private:
    SourceString path_;
};

} // namespace qncore
