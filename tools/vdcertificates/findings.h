#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "tools/vdcertificates/entry.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/json_writer.h"
#include "tools/vdcertificates/output.h"

namespace tool {

enum class Severity : std::uint8_t { ok, note, warning, problem };

/// One thing that `check` has to say. The code is stable: monitoring may compare it.
struct Finding {
    Severity severity;
    const char* code;
    std::string message;
    std::string path;   ///< the file that it is about; may be empty
    std::string role;   ///< of the entry that it is about; may be empty
    std::string server; ///< likewise
};

class Findings {
  public:
    void add(Severity severity, const char* code, std::string message, std::string path = {});
    /// About an entry: the message begins with its title.
    void add(Severity severity, const char* code, const Entry& entry, const std::string& message,
             std::string path = {});
    void add(const Failure& failure) {
        add(Severity::problem, failure.code(), failure.what(), failure.path());
    }

    /// Prints all of them; failed when there is a problem.
    ExitStatus print(Format format) const;
    void append(JsonWriter& json) const;
    ExitStatus status() const noexcept { return has_problem_ ? status_failed : status_done; }

  private:
    std::deque<Finding> findings_;
    bool has_problem_ = false;
};

} // namespace tool
