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
    const std::pair<const wchar_t*, const wchar_t*> lists[]{
        {L"", L""},
        {L" ; ", L" ; "},
        {L"example.com;https://example.com", L"https://example.com"},
        {L"example.com/path", L"example.com/path"},
        {L"*", L"*"},
        {L"*.", L"*."},
        {L"a.*.example", L"a.*.example"},
        {L"*example.com", L"*example.com"},
        {L"*.*.example", L"*.*.example"},
        {L"127.0.0.1", L"127.0.0.1"},
        {L"example.com:0", L"example.com:0"},
        {L"example.com other.example", L"example.com other.example"},
        {L"user@example.com", L"user@example.com"},
    };
    for (const auto& [list, malformed] : lists) {
        SCOPED_TRACE(testing::PrintToString(list));
        EXPECT_EQ(FindMalformedEntry(list), malformed);
    }
    EXPECT_EQ(FindMalformedEntry(List), std::nullopt);
    EXPECT_EQ(FindMalformedEntry(L"localhost:18443;"), std::nullopt);
}
