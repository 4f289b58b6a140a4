// What becomes of the proxy of Windows, without asking Windows or the network.
#pragma once

#include <cstdint>
#include <string>

namespace product_services_guard {

struct ProxySettings
{
    /// Of Windows, from reading them; zero where they were read.
    std::uint32_t error = 0;
    std::wstring proxies;
    std::wstring exceptions;
};

/// Which variables the process has already.
struct ProxyEnvironment
{
    bool hasProxy = false;
    bool hasExceptions = false;
};

struct ProxyDecision
{
    /// A ProductServicesProxy.
    std::uint32_t outcome;
    /// The proxy, or the sentence of a failure.
    std::wstring text;
    /// The values to set, where they are not empty.
    std::wstring httpsProxy;
    std::wstring noProxy;
};

/// `serviceAddress` may be null, as in UseWindowsProxy.
ProxyDecision DecideProxy(
    const ProxySettings& settings, const wchar_t* serviceAddress, const ProxyEnvironment& environment);

} // namespace product_services_guard
