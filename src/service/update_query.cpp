#include "service/update_query.h"

#include "platform/machine_identifier.h"
#include "service/text_conversion.h"

namespace product_services {

std::string BuildUpdateQuery(
    std::wstring apiKey, std::wstring productKey, std::wstring version, std::wstring up)
{
    // Deliberate: the service expects the values as they are, without percent-encoding.
    return ToUtf8(
        L"api_key=" + apiKey + L"&key=" + productKey + L"&hardware_id=" + MachineIdentifier() + L"&version=" +
        version + L"&up=" + up);
}

} // namespace product_services
