#include "ConfigurationFile/trace_topic.h"

#include <string>

namespace vdcertificates {

constinit qntrace::intTopicHdl* g_traceTopic = nullptr;

namespace {

/// Opens the module's topic while the library is loaded.
struct TopicRegistration {
    TopicRegistration() noexcept {
        g_traceTopic = qntrace::get_system_topic_handle();
        try {
            const std::string name = "VDCertificatesConfigurationFile";
            g_traceTopic =
                qntrace::get_trace_mgr().open_topic(name, nullptr, static_cast<char>(0x81));
        } catch (...) {
            return; // without memory the general topic stays
        }
    }
};

const TopicRegistration g_registration;

} // namespace

} // namespace vdcertificates
