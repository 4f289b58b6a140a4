// Finds a proxy that accepts connections.
#pragma once

#include "calls/transfer_limits.h"

#include <string>
#include <vector>

namespace product_services_guard {

/// A proxy that was tried.
struct ProxyCandidate
{
    std::wstring proxy;
    bool isReachable = false;
};

/// Returns the first proxy in the list that accepts a TCP connection within two seconds, or an empty text if
/// none does. Nothing is sent. Adds the proxies that were tried to `candidates`, unless that is null.
std::wstring FirstReachableProxy(
    const std::wstring& proxies, const TransferLimits& limits,
    std::vector<ProxyCandidate>* candidates = nullptr);

} // namespace product_services_guard
