// Tries whether a proxy can be reached.
#pragma once

#include <string>

namespace product_services_guard {

/// Of a configuration script's proxies, the first that a connection reaches; empty where none is reached, as
/// where the list is empty. Each address of a proxy's name is tried for two seconds; nothing is sent.
std::wstring FirstReached(const std::wstring& proxies);

} // namespace product_services_guard
