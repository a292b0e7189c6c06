#include "qncore/streamers.h"

#include <array>
#include <charconv>
#include <ostream>
#include <string_view>

namespace qncore::streamers {

void Hex::write_trace_impl(std::ostream& stream, unsigned long long value,
                           unsigned long long digits) {
    std::array<char, 16> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, 16).ptr;
    const std::string_view written(text.data(), static_cast<std::size_t>(end - text.data()));
    for (auto length = written.size(); length < digits; ++length) {
        stream.put('0');
    }
    stream << written;
}

} // namespace qncore::streamers
