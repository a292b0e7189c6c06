#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "platform/system_error.h"
#include "tools/vdcertificates/entry.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/json_writer.h"
#include "tools/vdcertificates/output.h"

namespace tool {

class Store;

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

    /// Adds what the store made, and the warnings about its place.
    void add_remarks(const Store& store);

    /// True if the answer about the file is yes. No answer is a problem, unless the file is
    /// missing.
    bool holds(const platform::Result<bool>& answer, const std::string& path);

    void append(Output& output) const;   ///< as lines
    void append(JsonWriter& json) const; ///< as objects
    void clear() noexcept { findings_.clear(); }
    /// Failed when there was a problem.
    ExitStatus status() const noexcept { return has_problem_ ? status_failed : status_done; }

  private:
    std::deque<Finding> findings_;
    bool has_problem_ = false;
};

/// Prints findings while more are looked for, so that memory does not hold all of them.
class FindingsPrinter {
  public:
    explicit FindingsPrinter(Format format);

    /// Prints and clears them.
    void print(Findings& findings);
    void finish();

  private:
    Output output_;
    std::optional<JsonWriter> json_; ///< or lines are printed
};

} // namespace tool
