// The list of hosts whose URLs are trusted.
#pragma once

#include <optional>
#include <string_view>

namespace product_services_guard {

/// Returns the first invalid entry of the list, the entire list if it has no entries, or nullopt if it is
/// valid. GuardedCallParams::trustedHosts describes the syntax.
std::optional<std::wstring_view> FindInvalidEntry(std::wstring_view list);

/// Returns true if the URL has the strict form, and its host and port match an entry of the list.
bool MatchesTrustedHosts(std::wstring_view url, std::wstring_view list);

} // namespace product_services_guard
