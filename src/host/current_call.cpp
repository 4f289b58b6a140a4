#include "host/current_call.h"

#include "host/host_environment.h"
#include "text/text_table.h"

namespace product_services {

HostContext* CurrentHostContext = nullptr;
TextTable* CurrentTextTable = nullptr;
constinit CallEnvironment* CurrentEnvironment = &DefaultEnvironment;

std::wstring TextOrEmpty(const wchar_t* text)
{
    return text ? text : std::wstring();
}

std::wstring CurrentText(std::int32_t id)
{
    return LookupText(*CurrentTextTable, id);
}

} // namespace product_services
