#pragma once

#include <string>
#include <vector>

#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"

namespace support {

/// Traces of this process go to a file of the capture until it goes.
class TraceCapture {
  public:
    /// `levels` as QNTRACE takes them, such as "81" or "System=11".
    explicit TraceCapture(const std::string& levels);
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture();

    /// What was written so far, one message an element.
    std::vector<std::string> lines() const;
    /// The whole of it.
    std::string text() const;

  private:
    TemporaryDirectory directory_;
    EnvironmentGuard levels_;
    EnvironmentGuard file_;
};

} // namespace support
