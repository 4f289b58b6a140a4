#include "service_address.h"

#include "proxy_list.h"

namespace product_services_guard {
namespace {

constexpr wchar_t UsualPort[] = L"443";

bool ConsistsOf(const std::wstring& text, const wchar_t* signs)
{
    return !text.empty() && text.find_first_not_of(signs) == text.npos;
}

bool IsHost(const HostAndPort& server)
{
    return ConsistsOf(
        server.host, server.isBracketed ? L"0123456789abcdef:." : L"0123456789abcdefghijklmnopqrstuvwxyz.-_");
}

bool IsPort(const std::wstring& port)
{
    return ConsistsOf(port, L"0123456789") && port.size() <= 5;
}

} // namespace

std::optional<ServiceAddress> ReadServiceAddress(std::wstring address)
{
    address = InLowerCase(std::move(address));
    if (CutScheme(address) != L"https") {
        return std::nullopt;
    }
    HostAndPort server = CutPort(address.substr(0, address.find_first_of(L"/?#")));
    if (server.port.empty()) {
        server.port = UsualPort;
    }
    if (!IsHost(server) || !IsPort(server.port)) {
        return std::nullopt;
    }
    return ServiceAddress{server.host, server.port};
}

} // namespace product_services_guard
