#include "text/language_code.h"

#include "product_services/product_services.h"

namespace product_services {

std::wstring LanguageCodeFromId(std::int32_t languageId)
{
    switch (languageId) {
    case PRODUCT_SERVICES_LANGUAGE_EN:
        return L"EN";
    case PRODUCT_SERVICES_LANGUAGE_CZ:
        return L"CZ";
    case PRODUCT_SERVICES_LANGUAGE_DE:
        return L"DE";
    case PRODUCT_SERVICES_LANGUAGE_ES:
        return L"ES";
    case PRODUCT_SERVICES_LANGUAGE_FR:
        return L"FR";
    case PRODUCT_SERVICES_LANGUAGE_IT:
        return L"IT";
    case PRODUCT_SERVICES_LANGUAGE_JA:
        return L"JA";
    case PRODUCT_SERVICES_LANGUAGE_PL:
        return L"PL";
    case PRODUCT_SERVICES_LANGUAGE_RU:
        return L"RU";
    case PRODUCT_SERVICES_LANGUAGE_TW:
        return L"TW";
    case PRODUCT_SERVICES_LANGUAGE_ZH:
        return L"ZH";
    default:
        // Deliberate: not "EN". Unknown languages have their own folder.
        return L"US";
    }
}

} // namespace product_services
