#include "user_language.h"

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
    {L"en", 120},    {L"cs", 130},    {L"de", 140},    {L"es", 150}, {L"fr", 160},
    {L"it", 170},    {L"ja", 180},    {L"pl", 190},    {L"ru", 200}, {L"zh-Hant", 220},
    {L"zh-TW", 220}, {L"zh-HK", 220}, {L"zh-MO", 220}, {L"zh", 230},
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

static_assert(LanguageIdFromLocale(L"de-AT") == 140 && LanguageIdFromLocale(L"fr") == 160);
static_assert(LanguageIdFromLocale(L"zh-Hant-TW") == 220 && LanguageIdFromLocale(L"zh-HK") == 220);
static_assert(LanguageIdFromLocale(L"zh-Hans-CN") == 230 && LanguageIdFromLocale(L"zh-CN") == 230);
static_assert(LanguageIdFromLocale(L"csb-PL") == 0 && LanguageIdFromLocale(L"pt-BR") == 0);

} // namespace

int UserLanguageId()
{
    wchar_t locale[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(locale, LOCALE_NAME_MAX_LENGTH);
    return LanguageIdFromLocale(locale);
}
