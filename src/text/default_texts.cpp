#include "text/default_texts.h"

#include <array>

namespace product_services {
namespace {

// The position is the id. Nothing shows a reserved text; they keep the lines of language files in place.
constexpr std::array<const wchar_t*, DefaultTextCount> DefaultTexts{
    // clang-format off
    L"(reserved 0)",
    L"(reserved 1)",
    L"(reserved 2)",
    L"(reserved 3)",
    L"(reserved 4)",
    L"(reserved 5)",
    L"(reserved 6)",
    L"(reserved 7)",
    L"(reserved 8)",
    L"(reserved 9)",
    L"(reserved 10)",
    L"(reserved 11)",
    L"Exit", // 12
    L"(reserved 13)",
    L"(reserved 14)",
    L"(reserved 15)",
    L"(reserved 16)",
    L"(reserved 17)",
    L"(reserved 18)",
    L"(reserved 19)",
    L"(reserved 20)",
    L"(reserved 21)",
    L"Upgrade center", // 22
    L"Product name", // 23
    L"Product version", // 24
    L"(reserved 25)",
    L"(reserved 26)",
    L"(reserved 27)",
    L"(reserved 28)",
    L"(reserved 29)",
    L"(reserved 30)",
    L"(reserved 31)",
    L"(reserved 32)",
    L"(reserved 33)",
    L"(reserved 34)",
    L"(reserved 35)",
    L"(reserved 36)",
    L"(reserved 37)",
    L"Buy now", // 38
    L"(reserved 39)",
    L"(reserved 40)",
    L"(reserved 41)",
    L"(reserved 42)",
    L"(reserved 43)",
    L"(reserved 44)",
    L"(reserved 45)",
    L"(reserved 46)",
    L"(reserved 47)",
    L"(reserved 48)",
    L"(reserved 49)",
    L"(reserved 50)",
    L"(reserved 51)",
    L"(reserved 52)",
    L"(reserved 53)",
    L"(reserved 54)",
    L"(reserved 55)",
    L"An unknown error occurred.", // 56
    L"No internet found!", // 57
    L"(reserved 58)",
    L"Unable to reach server!", // 59
    L"(reserved 60)",
    L"(reserved 61)",
    L"(reserved 62)",
    L"(reserved 63)",
    L"(reserved 64)",
    L"(reserved 65)",
    L"(reserved 66)",
    L"User chose to quit!", // 67
    L"(reserved 68)",
    L"(reserved 69)",
    L"No upgrades found!", // 70
    L"Browser opened, continue running!", // 71
    L"For upgrade center to appear, you need a stable internet connection!", // 72
    L"No data of the installed product was found.", // 73
    L"You are running the latest version", // 74
    L"Unstable internet connection.", // 75
    L"(reserved 76)",
    L"Unstable internet connection.", // 77
    L"(reserved 78)",
    L"(reserved 79)",
    L"(reserved 80)",
    L"(reserved 81)",
    L"(reserved 82)",
    L"(reserved 83)",
    L"(reserved 84)",
    L"(reserved 85)",
    L"(reserved 86)",
    L"(reserved 87)",
    // clang-format on
};

} // namespace

void FillDefaultTexts(TextTable& table)
{
    for (std::size_t id = 0; id < DefaultTexts.size(); ++id) {
        table.Set(static_cast<TextId>(id), DefaultTexts[id]);
    }
}

} // namespace product_services
