#include "service/endpoints.h"

#include "platform/family.h"

namespace product_services::endpoints {

const std::wstring GetUpdatesUrl = std::wstring(Family.serviceBaseAddress) + L"/get_updates.php";
const std::wstring CheckUrl = std::wstring(Family.serviceBaseAddress) + L"/check.php";

} // namespace product_services::endpoints
