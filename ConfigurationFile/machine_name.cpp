#include "ConfigurationFile/machine_name.h"

#include <stdexcept>

#include "ConfigurationFile/configuration_file.h"
#include "ConfigurationFile/trace_topic.h"
#include "platform/machine.h"
#include "platform/name_service.h"
#include "qncertificates/errors.h"
#include "qncore/error_composer.h"
#include "qncore/string_conversion.h"

namespace vdcertificates {

std::string get_local_machine_name() {
    const char* function = "vdcertificates::get_local_machine_name()";
    auto name = platform::computer_name();
    if (!name) {
        qncore::ErrorComposer("Failed to get the computer's name")
            .throw_with_nested_system_error(qncertificates::error::qncertificates_parameter_invalid,
                                            QN_LOCATION(function), name.error());
    }
    QN_TRACE_NOTE(g_traceTopic, function, "obtainedServerName: {}", *name);
    return std::move(*name);
}

auto_search_string::auto_search_string() {
    if (const int error = platform::start_name_service(); error != 0) {
        throw std::runtime_error("WSAStartup() failed. WSAGetLastError=" +
                                 qncore::to_string(error));
    }
}

auto_search_string::~auto_search_string() {
    if (const int error = platform::stop_name_service(); error != 0) {
        QN_TRACE_ERROR(g_traceTopic, "~auto_search_string()",
                       "WSACleanup error. WSAGetLastError={}", error);
    }
}

std::string auto_search_string::to_host_name(const std::string& server) {
    const auto family = server.find(':') != std::string::npos ? platform::AddressFamily::ipv6
                                                              : platform::AddressFamily::ipv4;
    const platform::HostName host = platform::host_name_of_address(server, family);
    if (!host.is_address) {
        return server.substr(0, server.find('.'));
    }
    if (host.error != 0) {
        throw std::runtime_error("getnameinfo() failed. WSAGetLastError=" +
                                 qncore::to_string(host.error));
    }
    QN_TRACE_NOTE(g_traceTopic, "vdcertificates::auto_search_string::to_host_name()",
                  "Converted the IP address {} to {}", server, host.name);
    return host.name.substr(0, host.name.find('.'));
}

} // namespace vdcertificates
