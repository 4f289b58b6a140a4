// The results of VerifyPublisher for each result of Windows.
#include "signature/publisher_result.h"
#include "support/data_file.h"

#include <cstdint>
#include <gtest/gtest.h>

using namespace product_services_guard;

TEST(PublisherResult, FollowsFromTheSignature)
{
    const nlohmann::ordered_json cases = ReadDataFile("guard/publisher_results.json");
    for (const auto& [name, row] : cases.items()) {
        SCOPED_TRACE(name);
        const Signature signature{
            static_cast<LONG>(std::stoul(row.value("status", "0"), nullptr, 16)),
            static_cast<DWORD>(std::stoul(row.value("certificate errors", "0"), nullptr, 16)),
            ToWide(row.value("signer", "Example Maker"))};
        const PublisherResult result = EvaluateSignature(signature, L"Example Maker");
        EXPECT_EQ(result.status, row["result"].get<std::uint32_t>());
        EXPECT_EQ(result.text, ToWide(row["text"]));
    }
}
