#include "platform/name_service.h"

#include <arpa/inet.h>
#include <array>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
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

HostName name_of(const sockaddr* address, socklen_t length) {
    HostName host;
    host.is_address = true;
    if (take_failure(Call::host_name)) {
        host.error = static_cast<int>(seams().failure.number());
        return host;
    }
    std::array<char, NI_MAXHOST> name{};
    std::array<char, NI_MAXSERV> service{};
    host.error = ::getnameinfo(address, length, name.data(), name.size(), service.data(),
                               service.size(), NI_NUMERICSERV);
    host.name = name.data();
    return host;
}

/// Unlike getaddrinfo(), inet_pton() takes no short and octal forms such as "10.1" and "010.0.0.1".
HostName name_of_ipv4(const std::string& text) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    return ::inet_pton(AF_INET, text.c_str(), &address.sin_addr) == 1
               ? name_of(reinterpret_cast<const sockaddr*>(&address), sizeof address)
               : HostName();
}

/// Unlike inet_pton(), getaddrinfo() takes scope identifiers.
HostName name_of_ipv6(const std::string& text) {
    addrinfo hints = {};
    hints.ai_family = AF_INET6;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo* found = nullptr;
    if (::getaddrinfo(text.c_str(), nullptr, &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
    return name_of(found->ai_addr, found->ai_addrlen);
}

} // namespace

HostName host_name_of_address(const std::string& address, AddressFamily family) {
    return family == AddressFamily::ipv4 ? name_of_ipv4(address) : name_of_ipv6(address);
}

} // namespace platform
