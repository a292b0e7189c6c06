#include "tools/vdcertificates/progress.h"

#include <cstdio>

#include "platform/terminal.h"

namespace tool {
namespace {

constexpr std::chrono::milliseconds between_lines(250);
constexpr std::string_view begin_line = "\r\x1b[K"; // ECMA-48: erase to the end of the line

void write(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace

Progress::~Progress() {
    if (shown_) {
        write(begin_line);
    }
}

void Progress::show(std::string_view text) {
    const Clock::time_point now = Clock::now();
    if (now < next_ || !platform::error_is_terminal()) {
        return;
    }
    write(begin_line);
    write("vdcertificates: ");
    write(text);
    shown_ = true;
    next_ = now + between_lines;
}

} // namespace tool
