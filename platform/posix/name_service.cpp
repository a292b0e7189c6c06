#include "platform/name_service.h"

#include <arpa/inet.h>
#include <array>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>

#include "platform/seams.h"

namespace platform {

int start_name_service() noexcept {
    return take_failure(Call::start_name_service) ? static_cast<int>(seams().failure.number()) : 0;
}

int stop_name_service() noexcept {
    return 0;
}

namespace {

/// getaddrinfo() by itself takes short and octal forms such as "10.1" and "010.0.0.1" as well.
bool is_dotted_quad(const std::string& address) {
    in_addr ignored = {};
    return ::inet_pton(AF_INET, address.c_str(), &ignored) == 1;
}

} // namespace

HostName host_name_of_address(const std::string& address, AddressFamily family) {
    if (family == AddressFamily::ipv4 && !is_dotted_quad(address)) {
        return {};
    }
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
    if (take_failure(Call::host_name)) {
        host.error = static_cast<int>(seams().failure.number());
        return host;
    }
    std::array<char, NI_MAXHOST> name{};
    std::array<char, NI_MAXSERV> service{};
    host.error = ::getnameinfo(found->ai_addr, found->ai_addrlen, name.data(), name.size(),
                               service.data(), service.size(), NI_NUMERICSERV);
    host.name = name.data();
    return host;
}

} // namespace platform
