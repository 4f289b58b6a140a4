#include "calls/transfer_limits.h"

#include <gtest/gtest.h>

TEST(TransferLimits, HaveADefaultOf30Seconds)
{
    product_services_guard::TransferLimits limits(0, nullptr);
    limits.StartClock();
    EXPECT_LE(limits.RemainingMs(), 30'000);
    EXPECT_GT(limits.RemainingMs(), 20'000);
}
