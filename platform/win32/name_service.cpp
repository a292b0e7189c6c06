#include "platform/name_service.h"

#include <array>

#include "platform/seams.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
// after windows.h
#include <ws2tcpip.h>

namespace platform {
namespace {

constexpr WORD winsock_version = 0x202;
constexpr INT address_size = 128;

/// The error number of a failed call, never 0; 0 if `result` is success.
int number_of(int result) noexcept {
    if (result == 0) {
        return 0;
    }
    const int number = ::WSAGetLastError();
    return number != 0 ? number : result;
}

} // namespace

int start_name_service() noexcept {
    if (take_failure(Call::start_name_service)) {
        return static_cast<int>(seams().failure.number());
    }
    WSADATA data = {};
    return number_of(::WSAStartup(winsock_version, &data));
}

int stop_name_service() noexcept {
    return number_of(::WSACleanup());
}

HostName host_name_of_address(const std::string& address, AddressFamily family) {
    alignas(sockaddr_storage) std::array<char, address_size> storage{};
    auto* socket_address = reinterpret_cast<sockaddr*>(storage.data());
    INT length = address_size;
    std::wstring text = wide(address);
    if (::WSAStringToAddressW(text.data(), family == AddressFamily::ipv6 ? AF_INET6 : AF_INET,
                              nullptr, socket_address, &length) != 0) {
        return {};
    }
    HostName host;
    host.is_address = true;
    if (take_failure(Call::host_name)) {
        host.error = static_cast<int>(seams().failure.number());
        return host;
    }
    std::array<char, NI_MAXHOST> name{};
    std::array<char, NI_MAXSERV> service{};
    host.error = number_of(::getnameinfo(socket_address, length, name.data(), name.size(),
                                         service.data(), service.size(), NI_NUMERICSERV));
    host.name = name.data();
    return host;
}

} // namespace platform
