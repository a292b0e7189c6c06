#include "tools/vdcertificates/open_store.h"

#include "ConfigurationFile/configuration_file_access.h"
#include "platform/file_system.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/output.h"

namespace tool {
namespace {

/// What `work` gives, or Failure with the library's cause in place of what it throws.
template <class Work>
auto with_cause(const LibraryTrace& trace, const Work& work) {
    try {
        return work();
    } catch (const std::exception& error) {
        throw Failure(trace.cause(error.what()));
    }
}

} // namespace

OpenStore::OpenStore()
    : file_(with_cause(trace_, [] { return vdcertificates::ConfigurationFile(); })) {}

std::string OpenStore::path() {
    return with_cause(trace_, [&] { return vdcertificates::ConfigurationFileAccess::path(file_); });
}

std::string OpenStore::read_all(std::vector<Entry>& entries) {
    if (platform::check_existence(path()).is_not_found()) {
        return {};
    }
    try {
        for (const std::string& section : section_names()) {
            read_section(file_, section, entries);
        }
    } catch (const std::exception& error) {
        return trace_.cause(error.what());
    }
    return {};
}

void OpenStore::print_warnings() const {
    for (const std::string& warning : trace_.warnings()) {
        print_error("warning: " + warning);
    }
    if (const std::string replacement = trace_.key_replacement(); !replacement.empty()) {
        print_error("warning: " + replacement);
    }
}

} // namespace tool
