#include "service/endpoints.h"

#include "platform/family.h"

namespace product_services::endpoints {

const std::wstring GetUpdates = std::wstring(Family.serviceBaseAddress) + L"/get_updates.php";
const std::wstring Check = std::wstring(Family.serviceBaseAddress) + L"/check.php";

} // namespace product_services::endpoints
