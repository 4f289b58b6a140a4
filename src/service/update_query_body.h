#pragma once

#include <string>

namespace product_services {

/// Returns the form body of an update query, in UTF-8:
///
///     api_key=ABC123&key=K-1&hardware_id=M1&version=20.1&up=1
///
/// `up` is the kind of query: "1" for the update check, "0" for the upgrade center. Throws
/// std::range_error("bad conversion") if a value has a character outside the Basic Multilingual Plane.
std::string BuildUpdateQuery(
    std::wstring apiKey, std::wstring productKey, std::wstring version, std::wstring up);

} // namespace product_services
