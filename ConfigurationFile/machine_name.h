#pragma once

#include <string>

namespace vdcertificates {

/// Converts addresses to host names. Keeps the system's name service started while it lives.
class auto_search_string {
  public:
    /// Throws std::runtime_error if the name service does not start.
    auto_search_string();
    auto_search_string(const auto_search_string&) = delete;
    auto_search_string& operator=(const auto_search_string&) = delete;
    ~auto_search_string();

    /// Returns the short host name of an address, or the part of a name before its first dot. May
    /// wait for the network; throws std::runtime_error if the look-up fails. An address without a
    /// name is cut at its first dot, too.
    std::string to_host_name(const std::string& server);
};

} // namespace vdcertificates
