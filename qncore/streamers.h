#pragma once

#include <iosfwd>

namespace qncore::streamers {

/// A value that is inserted in hexadecimal, with at least `digits` digits.
class Hex {
  public:
    explicit Hex(unsigned long long value, unsigned long long digits = 0) noexcept
        : value_(value)
        , digits_(digits) {}

    /// Writes the value in lower case with leading zeros up to `digits` digits.
    static void write_trace_impl(std::ostream& stream, unsigned long long value,
                                 unsigned long long digits);

    friend std::ostream& operator<<(std::ostream& stream, const Hex& hex) {
        write_trace_impl(stream, hex.value_, hex.digits_);
        return stream;
    }

  private:
    unsigned long long value_;
    unsigned long long digits_;
};

} // namespace qncore::streamers
