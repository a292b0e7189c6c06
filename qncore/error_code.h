#pragma once

#include <string_view>

#include "qncore/source_string.h"

namespace qncore {

/// The name of a kind of failure: a dotted path that begins with "error." and the layer, such as
/// "error.qnfile.io.open". Codes are static constants; every prefix of a code is one, too.
class ErrorCode {
  public:
    /// Borrows a literal.
    constexpr explicit ErrorCode(const char* code) noexcept
        : path_(code) {}

    /// Borrows the text (`isStatic` true) or copies it.
    constexpr ErrorCode(const char* code, bool isStatic)
        : path_(isStatic ? SourceString(code) : SourceString(code, false)) {}

    std::string_view path() const noexcept { return path_.view(); }

    /// True for the code itself and for each code below it.
    bool covers(const ErrorCode& other) const noexcept;

    friend bool operator==(const ErrorCode& left, const ErrorCode& right) noexcept {
        return left.path_ == right.path_;
    }

  private:
    SourceString path_;
};

} // namespace qncore
