// What VerifyPublisher says of what Windows finds.
#include "publisher_verdict.h"
#include "support/data_file.h"

#include <gtest/gtest.h>

using namespace product_services_guard;

TEST(PublisherVerdict, GivesEachFindingOfWindowsItsOutcomeAndSentence)
{
    const nlohmann::ordered_json cases = ReadDataFile("guard/verdicts.json");
    for (const auto& [name, row] : cases.items()) {
        SCOPED_TRACE(name);
        const Signature signature{
            static_cast<LONG>(std::stoul(row.value("status", "0"), nullptr, 16)),
            static_cast<DWORD>(std::stoul(row.value("certificate errors", "0"), nullptr, 16)),
            Wide(row.value("signer", "Example Maker"))};
        const Verdict verdict = Judge(signature, L"Example Maker");
        EXPECT_EQ(verdict.outcome, row["outcome"]);
        EXPECT_EQ(verdict.text, Wide(row["says"]));
    }
}
