#include "tools/vdcertificates/root_element.h"

#include <array>
#include <string_view>

#include "platform/file.h"

namespace tool {
namespace {

/// What stands behind the next `end`; nothing when there is none.
std::string_view behind(std::string_view text, std::string_view end) {
    const std::size_t place = text.find(end);
    return place == std::string_view::npos ? std::string_view() : text.substr(place + end.size());
}

std::string first_element(std::string_view text) {
    for (text = behind(text, "<"); !text.empty(); text = behind(text, "<")) {
        if (text.starts_with("!--")) {
            text = behind(text, "-->");
        } else if (text.starts_with('?') || text.starts_with('!')) {
            text = behind(text, ">");
        } else {
            return std::string(text.substr(0, text.find_first_of(" \t\r\n/>")));
        }
    }
    return {};
}

} // namespace

RootElement root_element(const std::string& path) {
    const auto file = platform::open_file(path, platform::FileAccess::read,
                                          platform::FileDisposition::open_existing,
                                          platform::FileSharing::read_write, {});
    if (!file) {
        return {};
    }
    std::array<char, 4096> start{};
    const auto count = platform::read_file(*file, start.data(), start.size());
    platform::close_file(*file);
    if (!count) {
        return {};
    }
    return {*count == 0, first_element({start.data(), *count})};
}

} // namespace tool
