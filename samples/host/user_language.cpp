#include "user_language.h"

#include <product_services/product_services.h>

#include <string_view>
#include <windows.h>

namespace {

struct Language
{
    std::wstring_view locale;
    int id;
};

// Chinese goes by its script: what is not named here is simplified.
constexpr Language Languages[]{
    {L"en", PRODUCT_SERVICES_LANGUAGE_EN},    {L"cs", PRODUCT_SERVICES_LANGUAGE_CZ},
    {L"de", PRODUCT_SERVICES_LANGUAGE_DE},    {L"es", PRODUCT_SERVICES_LANGUAGE_ES},
    {L"fr", PRODUCT_SERVICES_LANGUAGE_FR},    {L"it", PRODUCT_SERVICES_LANGUAGE_IT},
    {L"ja", PRODUCT_SERVICES_LANGUAGE_JA},    {L"pl", PRODUCT_SERVICES_LANGUAGE_PL},
    {L"ru", PRODUCT_SERVICES_LANGUAGE_RU},    {L"zh-Hant", PRODUCT_SERVICES_LANGUAGE_TW},
    {L"zh-TW", PRODUCT_SERVICES_LANGUAGE_TW}, {L"zh-HK", PRODUCT_SERVICES_LANGUAGE_TW},
    {L"zh-MO", PRODUCT_SERVICES_LANGUAGE_TW}, {L"zh", PRODUCT_SERVICES_LANGUAGE_ZH},
};

constexpr int LanguageIdFromLocale(std::wstring_view locale)
{
    for (const Language& language : Languages) {
        const std::size_t length = language.locale.size();
        if (locale.starts_with(language.locale) && (locale.size() == length || locale[length] == L'-')) {
            return language.id;
        }
    }
    return 0;
}

static_assert(
    LanguageIdFromLocale(L"de-AT") == PRODUCT_SERVICES_LANGUAGE_DE &&
    LanguageIdFromLocale(L"fr") == PRODUCT_SERVICES_LANGUAGE_FR);
static_assert(
    LanguageIdFromLocale(L"zh-Hant-TW") == PRODUCT_SERVICES_LANGUAGE_TW &&
    LanguageIdFromLocale(L"zh-HK") == PRODUCT_SERVICES_LANGUAGE_TW);
static_assert(
    LanguageIdFromLocale(L"zh-Hans-CN") == PRODUCT_SERVICES_LANGUAGE_ZH &&
    LanguageIdFromLocale(L"zh-CN") == PRODUCT_SERVICES_LANGUAGE_ZH);
static_assert(LanguageIdFromLocale(L"csb-PL") == 0 && LanguageIdFromLocale(L"pt-BR") == 0);

} // namespace

int UserLanguageId()
{
    wchar_t locale[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(locale, LOCALE_NAME_MAX_LENGTH);
    return LanguageIdFromLocale(locale);
}
