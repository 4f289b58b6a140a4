#include "service/update_query_body.h"

#include "platform/machine_identifier.h"
#include "service/text_conversion.h"

namespace product_services {

std::string BuildUpdateQuery(
    std::wstring apiKey, std::wstring productKey, std::wstring version, std::wstring up)
{
    // Deliberate: the values are not percent-encoded; the service expects them as they are.
    return ToUtf8(
        L"api_key=" + apiKey + L"&key=" + productKey + L"&hardware_id=" + MachineIdentifier() + L"&version=" +
        version + L"&up=" + up);
}

} // namespace product_services
