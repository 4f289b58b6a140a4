#include "plain_address.h"
#include "support/data_file.h"
#include "trusted_hosts.h"
#include "windows_address.h"

#include <gtest/gtest.h>
#include <string>

using namespace product_services_guard;

namespace {

constexpr wchar_t List[] = L"example.com; *.shop.example ;Port.example:8443;xn--bcher-kva.example";

} // namespace

TEST(TrustedHosts, TakeThePlainAddressesOfTheList)
{
    const auto addresses = ReadDataFile("guard/addresses.json").at("trusted");
    for (const auto& [name, address] : addresses.items()) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(IsTrustedAddress(Wide(address), List));
        EXPECT_TRUE(IsReadAlikeByWindows(Wide(address).c_str()));
    }
    EXPECT_TRUE(IsTrustedAddress(L"https://example.com/" + std::wstring(2063, L'a'), List))
        << "as long as can be";
}

TEST(TrustedHosts, RefuseWhatIsNotOnTheListOrCouldBeReadInTwoWays)
{
    const auto addresses = ReadDataFile("guard/addresses.json").at("not trusted");
    for (const auto& [name, address] : addresses.items()) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(IsTrustedAddress(Wide(address), List));
    }
    EXPECT_FALSE(IsTrustedAddress(L"https://example.com/" + std::wstring(2064, L'a'), List)) << "too long";
}

TEST(TrustedHosts, NameTheEntryThatIsNoHost)
{
    const auto lists = ReadDataFile("guard/addresses.json").at("entries that name no host");
    for (const auto& [name, list] : lists.items()) {
        SCOPED_TRACE(name);
        EXPECT_EQ(FindMalformedEntry(Wide(list).c_str()), Wide(list));
    }
    EXPECT_EQ(FindMalformedEntry(L"example.com;https://example.com;*"), L"https://example.com")
        << "the first";
    EXPECT_EQ(FindMalformedEntry(List), std::nullopt);
    EXPECT_EQ(FindMalformedEntry(L"localhost:18443;"), std::nullopt);
}
