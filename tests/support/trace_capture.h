#pragma once

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "qncore/trace_topic.h"
#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"

namespace support {

/// Redirects the traces of this process to a file of its own while it lives.
class TraceCapture {
  public:
    /// `levels` as QNTRACE takes them, such as "81" or "System=11".
    explicit TraceCapture(const std::string& levels)
        : levels_("QNTRACE", levels)
        , file_("QNTRACE_FILE", file()) {
        qntrace::reload_configuration();
    }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture() {
        const EnvironmentGuard off("QNTRACE", "0");
        const EnvironmentGuard nowhere("QNTRACE_FILE", std::nullopt);
        qntrace::reload_configuration();
    }

    std::string file() const { return directory_.file("trace.log"); }

    /// All that was written so far.
    std::string text() const { return std::filesystem::exists(file()) ? read_file(file()) : ""; }

    /// The same, one message an element.
    std::vector<std::string> lines() const {
        std::istringstream stream(text());
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

  private:
    TemporaryDirectory directory_;
    EnvironmentGuard levels_;
    EnvironmentGuard file_;
};

} // namespace support
