#pragma once

#include <string>
#include <string_view>

#include "platform/append_file.h"

namespace qntrace {

/// The file of QNTRACE_FILE: lines are appended to it by one system call each, so that those of
/// several processes stay whole. From 5 MiB on it is renamed to `.1`, and up to three older files
/// are kept (`.1` to `.3`). For one thread at a time.
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
    bool cut_ = false; ///< the last line was written in part
};

} // namespace qntrace
