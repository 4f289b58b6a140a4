// Addresses in the form that every reader reads alike.
#pragma once

#include <optional>
#include <string_view>

namespace product_services_guard {

/// Where an address leads. The host is as it was written, a part of the text that was read.
struct Target
{
    std::wstring_view host;
    unsigned port = 0;
};

/// Reads "host" or "host:port"; without a port it is 443. Nothing where the host is no plain name: labels of
/// letters, digits and inner hyphens with single dots between them, of which the last is no number.
std::optional<Target> ReadTarget(std::wstring_view text);

/// Reads "https://", a target, and nothing more or a path, of at most 2,083 characters. Nothing where it is
/// anything else.
std::optional<Target> ReadPlainAddress(std::wstring_view address);

} // namespace product_services_guard
