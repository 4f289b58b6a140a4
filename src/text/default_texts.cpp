#include "text/default_texts.h"

#include "text/text_ids.h"

namespace product_services {
namespace {

struct DefaultText
{
    TextId id;
    const wchar_t* text;
};

constexpr DefaultText DefaultTexts[]{
    {text_ids::Exit, L"Exit"},
    {text_ids::UpgradeCenter, L"Upgrade center"},
    {text_ids::ProductName, L"Product name"},
    {text_ids::ProductVersion, L"Product version"},
    {text_ids::BuyNow, L"Buy now"},
    {text_ids::UnknownError, L"An unknown error occurred."},
    {text_ids::NoInternet, L"No internet found!"},
    {text_ids::ServerUnreachable, L"Unable to reach server!"},
    {text_ids::UserQuit, L"User chose to quit!"},
    {text_ids::NoUpgrades, L"No upgrades found!"},
    {text_ids::BrowserOpened, L"Browser opened, continue running!"},
    {text_ids::NoConnection, L"For upgrade center to appear, you need a stable internet connection!"},
    {text_ids::NoProductRecord, L"No data was found for the installed product."},
    {text_ids::LatestVersion, L"You are running the latest version"},
    {text_ids::UnstableConnectionUnused, L"Unstable internet connection."},
    {text_ids::UnstableConnection, L"Unstable internet connection."},
};

} // namespace

void FillDefaultTexts(TextTable& table)
{
    // Reserved texts are never shown. They keep the line numbers of language files stable.
    for (TextId id = 0; id < DefaultTextCount; ++id) {
        table.Set(id, L"(reserved " + std::to_wstring(id) + L")");
    }
    for (const DefaultText& entry : DefaultTexts) {
        table.Set(entry.id, entry.text);
    }
}

} // namespace product_services
