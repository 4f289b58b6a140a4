// What UseWindowsProxy decides, for settings as Windows has them.
#include "proxy_decision.h"
#include "proxy_script.h"
#include "support/data_file.h"

#include <gtest/gtest.h>

using namespace product_services_guard;

namespace {

// In the order of ProductServicesProxy.
constexpr const char* Outcomes[]{"none", "taken", "kept", "failed"};

std::wstring Text(const nlohmann::ordered_json& row, const char* member)
{
    return Wide(row.value(member, ""));
}

ProxyDecision Decide(const nlohmann::ordered_json& row)
{
    const ProxySettings settings{row.value("error", 0U), Text(row, "proxies"), Text(row, "exceptions")};
    const std::string own = row.value("the host's own", "");
    const nlohmann::ordered_json service =
        row.value("service", nlohmann::ordered_json("https://svc.corp.test:18443/updates"));
    const std::wstring address = service.is_null() ? L"" : Wide(service);
    return DecideProxy(
        settings, service.is_null() ? nullptr : address.c_str(), {own == "proxy", own == "exceptions"});
}

} // namespace

TEST(ProxyDecision, FollowsTheSettingsOfWindows)
{
    const nlohmann::ordered_json cases = ReadDataFile("guard/proxies.json");
    for (const auto& [name, row] : cases.items()) {
        SCOPED_TRACE(name);
        const ProxyDecision decision = Decide(row);
        const bool isFailed = row.at("outcome") == "failed";
        EXPECT_EQ(Outcomes[decision.outcome], row.at("outcome"));
        EXPECT_EQ(decision.httpsProxy, Text(row, "https_proxy"));
        EXPECT_EQ(decision.noProxy, Text(row, "no_proxy"));
        EXPECT_EQ(decision.text.ends_with(L'.'), isFailed) << "a failure says why";
        EXPECT_TRUE(isFailed || decision.text == decision.httpsProxy) << "or the text is the proxy";
    }
}

TEST(ProxyScript, GetsASignOnOfTheUserWhereTheUserHasConfiguredIt)
{
    EXPECT_TRUE(ConfiguredScript(L"http://script.example").fAutoLogonIfChallenged);
    EXPECT_FALSE(DetectedScript().fAutoLogonIfChallenged) << "it may be anybody's";
}
