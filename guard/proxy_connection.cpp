#include "proxy_connection.h"

#include "proxy_list.h"

#include <memory>
#include <winsock2.h>

#include <ws2tcpip.h>

namespace product_services_guard {
namespace {

constexpr timeval Patience{.tv_sec = 2, .tv_usec = 0};

class Sockets
{
public:
    Sockets() : m_areReady(WSAStartup(MAKEWORD(2, 2), &m_data) == 0) {}
    ~Sockets()
    {
        if (m_areReady) {
            WSACleanup();
        }
    }
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;

    bool AreReady() const { return m_areReady; }

private:
    WSADATA m_data{};
    bool m_areReady;
};

class Socket
{
public:
    explicit Socket(const ADDRINFOW& address)
        : m_socket(socket(address.ai_family, address.ai_socktype, address.ai_protocol))
    {
    }
    ~Socket()
    {
        if (m_socket != INVALID_SOCKET) {
            closesocket(m_socket);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    SOCKET Handle() const { return m_socket; }

private:
    SOCKET m_socket;
};

// A connection that is made shows as writable, one that is refused as failed.
bool IsReached(const ADDRINFOW& address)
{
    const Socket connection(address);
    u_long isNonBlocking = 1;
    if (connection.Handle() == INVALID_SOCKET ||
        ioctlsocket(connection.Handle(), static_cast<long>(FIONBIO), &isNonBlocking) != 0) {
        return false;
    }
    if (connect(connection.Handle(), address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0) {
        return true;
    }
    if (WSAGetLastError() != WSAEWOULDBLOCK) {
        return false;
    }
    fd_set connected{.fd_count = 1, .fd_array = {connection.Handle()}};
    fd_set failed = connected;
    timeval patience = Patience;
    return select(0, nullptr, &connected, &failed, &patience) > 0 && connected.fd_count == 1 &&
           failed.fd_count == 0;
}

struct Freed
{
    void operator()(ADDRINFOW* addresses) const { FreeAddrInfoW(addresses); }
};

bool IsReached(std::wstring proxy)
{
    CutScheme(proxy);
    const HostAndPort server = CutPort(proxy.substr(proxy.find(L'@') + 1));
    ADDRINFOW hints{};
    hints.ai_socktype = SOCK_STREAM;
    ADDRINFOW* found = nullptr;
    if (GetAddrInfoW(server.host.c_str(), server.port.c_str(), &hints, &found) != 0) {
        return false;
    }
    const std::unique_ptr<ADDRINFOW, Freed> addresses(found);
    for (const ADDRINFOW* address = found; address; address = address->ai_next) {
        if (IsReached(*address)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::wstring FirstReached(const std::wstring& proxies)
{
    const Sockets sockets;
    if (!sockets.AreReady()) {
        return {};
    }
    for (const std::wstring& proxy : HttpsProxies(proxies)) {
        if (IsReached(proxy)) {
            return proxy;
        }
    }
    return {};
}

} // namespace product_services_guard
