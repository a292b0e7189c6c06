#pragma once

#include <string>
#include <string_view>

#include "platform/append_file.h"

namespace qntrace {

/// The file that QNTRACE_FILE names. Each line is appended by one system call, so the lines of
/// several processes stay whole. A file of 5 MiB or more is renamed to `.1`; three older files are
/// kept (`.1` to `.3`). Not thread-safe.
class TraceFile {
  public:
    TraceFile(platform::AppendFile file, std::string name)
        : file_(std::move(file))
        , name_(std::move(name)) {}

    void write(std::string_view line);

  private:
    void turn_over();

    platform::AppendFile file_;
    std::string name_;
    bool cut_ = false; ///< the last line was written only in part
};

} // namespace qntrace
