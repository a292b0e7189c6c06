#pragma once

#include <string>
#include <vector>

#include "ConfigurationFile/configuration_file.h"
#include "tools/vdcertificates/entry.h"
#include "tools/vdcertificates/library_trace.h"

namespace tool {

/// The library at work, with its trace. Throws Failure with the cause when it cannot start.
class OpenStore {
  public:
    OpenStore();

    vdcertificates::ConfigurationFile& file() noexcept { return file_; }
    const LibraryTrace& trace() const noexcept { return trace_; }

    /// The whole path of the file. Throws Failure when there can be none.
    std::string path();

    /// Reads all three sections up to the first fault and gives that fault's text; a file that is
    /// not there yet is none and holds nothing.
    std::string read_all(std::vector<Entry>& entries);

    /// Tells on standard error what the library had to put up with.
    void print_warnings() const;

  private:
    LibraryTrace trace_; // before the first use of the library
    vdcertificates::ConfigurationFile file_;
};

} // namespace tool
