#include "tools/vdcertificates/input.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/native_path.h"

namespace tool {
namespace {

constexpr std::size_t piece = 65536;

/// Reads by `read(place, size)`, which returns 0 at the end.
template <class Read>
Secret read_all(std::size_t limit, const Read& read) {
    Secret text;
    std::size_t used = 0;
    for (;;) {
        text.resize(std::min(used + piece, limit));
        const std::size_t count = read(text.data() + used, text.text().size() - used);
        used += count;
        if (count == 0) {
            text.resize(used);
            return text;
        }
    }
}

} // namespace

Secret read_standard_input(std::size_t limit) {
    std::setvbuf(stdin, nullptr, _IONBF, 0); // so that no other buffer gets a password
    Secret text = read_all(limit, [](char* place, std::size_t size) {
        return size == 0 ? 0 : std::fread(place, 1, size, stdin);
    });
    if (std::ferror(stdin) != 0) {
        throw UsageError("standard input cannot be read");
    }
    return text;
}

Secret read_file(const std::string& path, std::size_t limit) {
    const auto refuse = [&]() {
        return UsageError("cannot read the file '" + path +
                          "': " + std::generic_category().message(errno));
    };
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    errno = 0;
    file.open(native_path(path), std::ios::binary);
    if (!file) {
        throw refuse();
    }
    return read_all(limit, [&](char* place, std::size_t size) {
        const std::streamsize count =
            size == 0 ? 0 : file.rdbuf()->sgetn(place, static_cast<std::streamsize>(size));
        if (count == 0 && errno != 0) {
            throw refuse();
        }
        return static_cast<std::size_t>(count);
    });
}

} // namespace tool
