#include "within_time.h"

// Before windows.h.
#include <winsock2.h>

#include <ws2tcpip.h>

#include "checks.h"

#include <memory>

namespace doctor {
namespace {

using std::chrono::seconds;

constexpr seconds NameLimit{10};
constexpr seconds ConnectionLimit{10};

struct Freed
{
    void operator()(ADDRINFOW* addresses) const { FreeAddrInfoW(addresses); }
};
using Addresses = std::shared_ptr<ADDRINFOW>;

Addresses LookUp(const Server& server)
{
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    ADDRINFOW hints{};
    hints.ai_socktype = SOCK_STREAM;
    ADDRINFOW* addresses = nullptr;
    if (GetAddrInfoW(server.host.c_str(), server.port.c_str(), &hints, &addresses) != 0) {
        return nullptr;
    }
    return {addresses, Freed()};
}

std::wstring NumberOf(const ADDRINFOW& address)
{
    wchar_t number[NI_MAXHOST] = {};
    GetNameInfoW(
        address.ai_addr, static_cast<socklen_t>(address.ai_addrlen), number, NI_MAXHOST, nullptr, 0,
        NI_NUMERICHOST);
    return number;
}

bool Accepts(const ADDRINFOW& address)
{
    const SOCKET tried = socket(address.ai_family, address.ai_socktype, address.ai_protocol);
    const bool isAccepted =
        tried != INVALID_SOCKET && connect(tried, address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0;
    closesocket(tried);
    return isAccepted;
}

// The number of the first address that accepts a connection; empty where none does.
std::wstring Connect(const Server& server)
{
    const Addresses addresses = LookUp(server);
    for (const ADDRINFOW* address = addresses.get(); address; address = address->ai_next) {
        if (Accepts(*address)) {
            return NumberOf(*address);
        }
    }
    return {};
}

} // namespace

Finding CheckName(const Server& server)
{
    const auto addresses = WithinTime(NameLimit, [=] { return LookUp(server); });
    if (!addresses) {
        return {
            State::Wrong, L"name", server.host + L" was not looked up within " + InWords(NameLimit),
            rows::Hanging};
    }
    if (!*addresses) {
        return {State::Wrong, L"name", server.host + L" is not known to the network", rows::Box};
    }
    return {State::Ok, L"name", server.host + L" is " + NumberOf(**addresses), rows::Box};
}

Finding CheckConnection(const Server& server)
{
    const auto number = WithinTime(ConnectionLimit, [=] { return Connect(server); });
    if (!number) {
        return {
            State::Wrong, L"connection", Text(server) + L" did not answer within " + InWords(ConnectionLimit),
            rows::Hanging};
    }
    if (number->empty()) {
        return {State::Wrong, L"connection", Text(server) + L" accepts none", rows::Box};
    }
    return {State::Ok, L"connection", Text(server) + L" accepts one at " + *number, rows::Box};
}

} // namespace doctor
