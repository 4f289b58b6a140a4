#include "host/current_call.h"

#include "text/text_table.h"

#include <shlwapi.h>

namespace product_services {

HostContext* CurrentHostContext = nullptr;
TextTable* CurrentTextTable = nullptr;

std::wstring HostText(const wchar_t* text)
{
    return text ? text : std::wstring();
}

std::wstring CurrentText(std::int32_t id)
{
    return LookupText(*CurrentTextTable, id);
}

void WriteResult(std::uint32_t resultCode, const std::wstring& text)
{
    CurrentHostContext->resultCode = resultCode;
    if (CurrentHostContext->resultText) {
        StrCpyW(CurrentHostContext->resultText, text.c_str());
    }
}

} // namespace product_services
