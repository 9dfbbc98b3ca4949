#include "console.h"

#include <gtest/gtest.h>

namespace {

TEST(Console, FormatsTimesAsHoursMinutesAndSeconds) {
    EXPECT_EQ(sonivex_tool::clockTime(0.0), "0:00");
    EXPECT_EQ(sonivex_tool::clockTime(65.9), "1:05");
    EXPECT_EQ(sonivex_tool::clockTime(3723.0), "1:02:03");
    EXPECT_EQ(sonivex_tool::clockTime(-1.0), "0:00");
}

}  // namespace
