#include "platform/name_service.h"

#include <array>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>

namespace platform {

int start_name_service() noexcept {
    return 0;
}

int stop_name_service() noexcept {
    return 0;
}

HostName host_name_of_address(const std::string& address, AddressFamily family) {
    addrinfo hints = {};
    hints.ai_family = family == AddressFamily::ipv6 ? AF_INET6 : AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address.c_str(), nullptr, &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
    HostName host;
    host.is_address = true;
    std::array<char, NI_MAXHOST> name{};
    std::array<char, NI_MAXSERV> service{};
    host.error = ::getnameinfo(found->ai_addr, found->ai_addrlen, name.data(), name.size(),
                               service.data(), service.size(), NI_NUMERICSERV);
    host.name = name.data();
    return host;
}

} // namespace platform
