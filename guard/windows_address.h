// How Windows reads an address.
#pragma once

namespace product_services_guard {

/// Whether Windows' own reader finds in an address what ReadPlainAddress does: the scheme, the host and the
/// port, and neither a user nor a password.
bool IsReadAlikeByWindows(const wchar_t* address);

} // namespace product_services_guard
