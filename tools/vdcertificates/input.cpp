#include "tools/vdcertificates/input.h"

#include <cstdio>

#include "platform/file.h"
#include "tools/vdcertificates/exit_status.h"

namespace tool {
namespace {

constexpr std::size_t piece = 65536;

/// Reads with `read(place, size)`, which returns 0 at the end.
template <class Read>
Secret read_all(std::size_t limit, const Read& read) {
    Secret text;
    std::size_t used = 0;
    for (;;) {
        text.resize(std::min(used + piece, limit));
        const std::size_t room = text.text().size() - used;
        const std::size_t count = room == 0 ? 0 : read(text.data() + used, room);
        used += count;
        if (count == 0) {
            text.resize(used);
            return text;
        }
    }
}

/// Closes a file at the end of a scope.
struct OpenFile {
    explicit OpenFile(platform::FileHandle opened) noexcept
        : handle(opened) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { platform::close_file(handle); }

    platform::FileHandle handle;
};

} // namespace

Secret read_standard_input(std::size_t limit) {
    std::setvbuf(stdin, nullptr, _IONBF, 0); // so that no other buffer gets a password
    Secret text = read_all(
        limit, [](char* place, std::size_t size) { return std::fread(place, 1, size, stdin); });
    if (std::ferror(stdin) != 0) {
        throw UsageError("standard input cannot be read");
    }
    return text;
}

Secret read_file(const std::string& path, std::size_t limit) {
    const auto refuse = [&](platform::SystemError error) {
        return UsageError("cannot read the file '" + path + "': " + platform::describe(error));
    };
    const auto handle = platform::open_input(path);
    if (!handle) {
        throw refuse(handle.error());
    }
    const OpenFile file(*handle);
    return read_all(limit, [&](char* place, std::size_t size) -> std::size_t {
        const auto count =
            platform::read_file(file.handle, place, static_cast<std::uint32_t>(size));
        if (!count) {
            throw refuse(count.error());
        }
        return *count;
    });
}

} // namespace tool
