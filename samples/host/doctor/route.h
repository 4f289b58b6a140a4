#pragma once

#include <string>

namespace doctor {

/// Where a connection is made to.
struct Server
{
    std::wstring host;
    std::wstring port;
};

/// How the library's transfers reach the service.
struct Route
{
    Server service;
    /// Empty host: asked directly.
    Server proxy;
    /// The variable that names the proxy, and what it holds, without a user's name and password.
    std::wstring variable;
    std::wstring value;
    /// Whether no_proxy excepts the service.
    bool isExcepted = false;
    /// Whether the proxy speaks a protocol that Windows' functions do not.
    bool isForeign = false;

    const Server& First() const { return proxy.host.empty() ? service : proxy; }
};

/// Reads the address and the environment variables of this process, as libcurl does.
Route ReadRoute(const std::wstring& serviceAddress);

/// "name:port", with brackets around an IPv6 address.
std::wstring Text(const Server& server);

} // namespace doctor
