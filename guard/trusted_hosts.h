// The hosts whose addresses a host application trusts.
#pragma once

#include <optional>
#include <string_view>

namespace product_services_guard {

/// The first entry of the list that names no host, or the whole list where it has no entry; nothing where the
/// list can be used. The grammar is that of GuardedCall::trustedHosts.
std::optional<std::wstring_view> FindMalformedEntry(std::wstring_view list);

/// Whether an address in its plain form leads to a host and port of the list.
bool IsTrustedAddress(std::wstring_view address, std::wstring_view list);

} // namespace product_services_guard
