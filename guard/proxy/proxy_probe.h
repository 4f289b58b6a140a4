// Tries whether a proxy accepts connections.
#pragma once

#include "calls/transfer_limits.h"

#include <string>
#include <vector>

namespace product_services_guard {

/// A proxy of a script's list that was tried.
struct ProxyCandidate
{
    std::wstring proxy;
    bool isReachable = false;
};

/// The first proxy of a script's list that accepts a connection, or an empty text if none does. Each has two
/// seconds; nothing is sent to it. Adds the proxies that were tried to `candidates`, unless that is null.
std::wstring FirstReachableProxy(
    const std::wstring& proxies, const TransferLimits& limits,
    std::vector<ProxyCandidate>* candidates = nullptr);

} // namespace product_services_guard
