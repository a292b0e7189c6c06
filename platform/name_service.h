#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// Starts and stops the system's name service for this process (counted). Success is 0; any other
/// value is the system's own number. Nothing to do on Linux.
int start_name_service() noexcept;
int stop_name_service() noexcept;

enum class AddressFamily { ipv4, ipv6 };

struct HostName {
    bool is_address = false; ///< the text was a numeric address of the family
    int error = 0;           ///< number of the failed look-up, 0 when there is a name
    std::string name;        ///< the host's name, or the address in numeric form
};

/// Reads a numeric address and asks the system for the name of the host behind it. May wait for
/// the network.
HostName host_name_of_address(const std::string& address, AddressFamily family);

} // namespace platform
