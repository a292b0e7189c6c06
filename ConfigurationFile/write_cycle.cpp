#include "ConfigurationFile/configuration_file_access.h"
#include "ConfigurationFile/errors.h"
#include "ConfigurationFile/trace_topic.h"
#include "qncore/error_exception.h"
#include "qnfile/file_stream.h"

namespace vdcertificates {
namespace {

using Access = ConfigurationFileAccess;

struct SectionImage {
    const Access::Section& section;
    ConfigurationFileNodes nodes = {};
};

} // namespace

void ConfigurationFileAccess::change(ConfigurationFile& file, const Section& section,
                                     const ConfigurationFileNodes& newNodes, const char* function,
                                     bool stopsAtSharingViolation) {
    SectionImage images[] = {{notifiers}, {devices}, {media_retrieval}};
    try {
        for (SectionImage& image : images) {
            (file.*image.section.read)(image.nodes);
        }
    } catch (const qncore::ErrorException& exception) {
        if (stopsAtSharingViolation && exception.matches(error::sharing_violation)) {
            QN_TRACE_ERROR(g_traceTopic, function,
                           "NOT performing operation due to SHARING VIOLATION: {}",
                           exception.what());
            exception.rethrow();
        }
    } catch (...) {
        // Required: whatever else ends the reading, the change goes on with what could be read.
    }

    std::string text = "<" + ConfigurationFile::sm_configurationFile + ">";
    for (SectionImage& image : images) {
        const bool changes = &image.section == &section;
        text += merge(file, changes ? newNodes : image.nodes, image.nodes, image.section.name);
    }
    text += "</" + ConfigurationFile::sm_configurationFile + ">";

    const std::string path = file.get_configuration_file_path();
    const ConfigurationFileExclusiveAccessLock lock(file.m_configurationFileMutex);
    qnfile::FileWriteStream::create(path, qnfile::create_always, qnfile::share_none,
                                    qnfile::flag_write_through)
        ->write(text.c_str(), text.size());
}

void ConfigurationFile::set_subsystems_certificate_information(
    const ConfigurationFileNodes& newNodes) {
    Access::change(*this, Access::notifiers, newNodes,
                   "vdcertificates::ConfigurationFile::set_subsystems_certificate_information()",
                   true);
}

void ConfigurationFile::set_devices_certificate_information(
    const ConfigurationFileNodes& newNodes) {
    Access::change(*this, Access::devices, newNodes,
                   "vdcertificates::ConfigurationFile::set_devices_certificate_information()",
                   true);
}

// Required: this one alone writes on after a sharing violation of its reads.
void ConfigurationFile::set_media_retrieval_certificate_information(
    const ConfigurationFileNodes& newNodes) {
    Access::change(
        *this, Access::media_retrieval, newNodes,
        "vdcertificates::ConfigurationFile::set_media_retrieval_certificate_information()", false);
}

} // namespace vdcertificates
