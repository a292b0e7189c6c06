#include "platform/file.h"

#include <algorithm>
#include <array>

namespace platform {

SystemError write_all(FileHandle file, std::string_view bytes) {
    constexpr std::size_t largest_part = std::size_t{1} << 30;
    while (!bytes.empty()) {
        const auto part = static_cast<std::uint32_t>(std::min(bytes.size(), largest_part));
        const auto written = write_file(file, bytes.data(), part);
        if (!written) {
            return written.error();
        }
        bytes.remove_prefix(*written);
    }
    return {};
}

SystemError copy_rest(FileHandle source, FileHandle target) {
    std::array<char, 65536> block; // not initialised: only bytes that were read are used
    for (;;) {
        const auto count = read_file(source, block.data(), block.size());
        if (!count || *count == 0) {
            return count.error();
        }
        if (const SystemError error = write_all(target, {block.data(), *count})) {
            return error;
        }
    }
}

} // namespace platform
