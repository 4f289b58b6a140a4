#include "text/language_code.h"

namespace product_services {

std::wstring LanguageCodeFromId(std::int32_t languageId)
{
    switch (languageId) {
    case 120:
        return L"EN";
    case 130:
        return L"CZ";
    case 140:
        return L"DE";
    case 150:
        return L"ES";
    case 160:
        return L"FR";
    case 170:
        return L"IT";
    case 180:
        return L"JA";
    case 190:
        return L"PL";
    case 200:
        return L"RU";
    case 220:
        return L"TW";
    case 230:
        return L"ZH";
    default:
        return L"US";
    }
}

} // namespace product_services
