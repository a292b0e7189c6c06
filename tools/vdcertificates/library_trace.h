#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The accessors of the library answer only true or false; why stands in its trace. While this
/// object lives, the trace goes to a file of its own for the current account alone, which goes
/// with the object and when a signal ends the program. A user who has set QNTRACE wants to see
/// the trace and keeps it. To be made before the first call of the library, once.
class LibraryTrace {
  public:
    LibraryTrace();
    LibraryTrace(const LibraryTrace&) = delete;
    LibraryTrace& operator=(const LibraryTrace&) = delete;
    ~LibraryTrace();

    /// What the library said last about an error; else, and when the user has the trace, what
    /// the caller knows itself or where to look.
    std::string cause(const std::string& known = "") const;

    /// What the library had to put up with, such as places that it may not write to. Each once.
    std::vector<std::string> warnings() const;

    /// What it said when it had to replace the machine's keys; empty when it did not.
    std::string key_replacement() const;

  private:
    /// The texts of all messages of a level so far.
    std::vector<std::string> messages(std::string_view level) const;

    std::string file_; ///< empty when the user has the trace
};

} // namespace tool
