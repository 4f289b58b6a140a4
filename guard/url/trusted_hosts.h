// The hosts whose URLs a host application trusts.
#pragma once

#include <optional>
#include <string_view>

namespace product_services_guard {

/// The first entry of the list that is not a host, or the whole list if it has no entry; nothing if the list
/// can be used. The grammar is that of GuardedCallParams::trustedHosts.
std::optional<std::wstring_view> FindInvalidEntry(std::wstring_view list);

/// Whether a strict https URL leads to a host and port of the list.
bool MatchesTrustedHosts(std::wstring_view url, std::wstring_view list);

} // namespace product_services_guard
