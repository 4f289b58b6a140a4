#include <centered_position.h>

#include <gtest/gtest.h>

TEST(CenterWindow, CentersInTheWorkArea)
{
    // Name, work area, window, and its new position.
    const std::tuple<const char*, RECT, RECT, POINT> cases[]{
        {"on the primary monitor, already elsewhere",
         {0, 0, 1920, 1040},
         {1000, 900, 1720, 1340},
         {600, 300}},
        {"on a monitor at the left and above", {-1280, -1024, 0, 0}, {0, 0, 720, 440}, {-1000, -732}},
        {"an odd pixel is left over", {0, 0, 801, 601}, {0, 0, 720, 440}, {40, 80}},
        {"wider than the monitor", {1920, 0, 2560, 1040}, {0, 0, 720, 440}, {1920, 300}},
        {"higher than the monitor", {0, 40, 1920, 440}, {0, 0, 720, 440}, {600, 40}},
    };
    for (const auto& [name, workArea, window, expected] : cases) {
        SCOPED_TRACE(name);
        const POINT position = CenteredPosition(workArea, window);
        EXPECT_EQ(position.x, expected.x);
        EXPECT_EQ(position.y, expected.y);
    }
}
