#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// Starts and stops the system's name service for this process; calls are counted. Returns 0 on
/// success, else the system's error number. A no-op on Linux.
int start_name_service() noexcept;
int stop_name_service() noexcept;

enum class AddressFamily { ipv4, ipv6 };

struct HostName {
    bool is_address = false; ///< the text was a numeric address of the family
    int error = 0;           ///< error number of the look-up; 0 if it succeeded
    std::string name;        ///< the host's name, or the numeric address if it has none
};

/// Parses a numeric address and looks up the name of its host. May wait for the network. A dotted
/// quad has four decimal numbers; the short forms of inet_aton() are not addresses.
HostName host_name_of_address(const std::string& address, AddressFamily family);

} // namespace platform
