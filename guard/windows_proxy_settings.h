// The proxy settings of Windows, as WinHTTP reads them.
#pragma once

#include "proxy_decision.h"

namespace product_services_guard {

/// The user's settings. With a service's address, the configuration scripts are asked about it first,
/// detected one and configured one; of a script's proxies only one that can be reached is left, or none.
ProxySettings ReadWindowsProxy(const wchar_t* serviceAddress);

} // namespace product_services_guard
