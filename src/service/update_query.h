#pragma once

#include <string>

namespace product_services {

/// The form body of an update query, in UTF-8:
///
///     api_key=ABC123&key=K-1&hardware_id=M1&version=20.1&up=1
///
/// `up` is the kind of query: "1" from the update check, "0" from the upgrade center. Throws
/// std::range_error("bad conversion") on a value with a character outside the basic plane.
std::string BuildUpdateQuery(
    std::wstring apiKey, std::wstring productKey, std::wstring version, std::wstring up);

} // namespace product_services
