#include "support/data_file.h"
#include "url/trusted_hosts.h"
#include "url/trusted_url.h"

#include <gtest/gtest.h>
#include <string>

using namespace product_services_guard;

namespace {

constexpr wchar_t List[] = L"example.com; *.shop.example ;Port.example:8443;xn--bcher-kva.example";
const std::wstring LongestUrl = L"https://example.com/" + std::wstring(2063, L'a');

} // namespace

TEST(TrustedHosts, AcceptListedUrls)
{
    const auto urls = ReadDataFile("guard/urls.json").at("trusted");
    for (const auto& [name, url] : urls.items()) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(MatchesTrustedHosts(ToWide(url), List)) << url;
        EXPECT_TRUE(IsTrustedUrl(ToWide(url), List)) << url << " as Windows parses it";
    }
    EXPECT_TRUE(MatchesTrustedHosts(LongestUrl, List));
}

TEST(TrustedHosts, RejectOtherAndAmbiguousUrls)
{
    const auto urls = ReadDataFile("guard/urls.json").at("not trusted");
    for (const auto& [name, url] : urls.items()) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(MatchesTrustedHosts(ToWide(url), List)) << url;
    }
    EXPECT_FALSE(MatchesTrustedHosts(LongestUrl + L'a', List)) << "too long";
    EXPECT_FALSE(MatchesTrustedHosts(std::wstring(L"https://example.com/\0", 21), List)) << "a NUL";
}

TEST(TrustedHosts, NameTheirInvalidEntry)
{
    const auto lists = ReadDataFile("guard/urls.json").at("invalid entries");
    for (const auto& [name, list] : lists.items()) {
        SCOPED_TRACE(name);
        EXPECT_EQ(FindInvalidEntry(ToWide(list).c_str()), ToWide(list));
    }
    EXPECT_EQ(FindInvalidEntry(L"example.com;https://example.com;*"), L"https://example.com") << "the first";
    EXPECT_EQ(FindInvalidEntry(List), std::nullopt);
    EXPECT_EQ(FindInvalidEntry(L"localhost:18443;"), std::nullopt);
}
