#include "tests/support/trace_capture.h"

#include <filesystem>
#include <sstream>

#include "qncore/trace_topic.h"

namespace support {

TraceCapture::TraceCapture(const std::string& levels)
    : levels_("QNTRACE", levels)
    , file_("QNTRACE_FILE", directory_.file("trace.log")) {
    qntrace::reload_configuration();
}

TraceCapture::~TraceCapture() {
    const EnvironmentGuard off("QNTRACE", "0");
    const EnvironmentGuard nowhere("QNTRACE_FILE", std::nullopt);
    qntrace::reload_configuration();
}

std::string TraceCapture::text() const {
    const std::string name = directory_.file("trace.log");
    return std::filesystem::exists(name) ? read_file(name) : "";
}

std::vector<std::string> TraceCapture::lines() const {
    std::istringstream stream(text());
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace support
