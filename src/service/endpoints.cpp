#include "service/endpoints.h"

#include "product_family.h"

namespace product_services::endpoints {

const std::wstring GetUpdates = std::wstring(product_family::ServiceBaseAddress) + L"/get_updates.php";
const std::wstring Check = std::wstring(product_family::ServiceBaseAddress) + L"/check.php";

} // namespace product_services::endpoints
