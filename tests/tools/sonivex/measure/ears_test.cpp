#include "ears.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::parseSegment;
using sonivex_tool::Segment;

TEST(EarSegments, ConsistOfANameAndTwoTimes) {
    Segment segment;
    ASSERT_TRUE(parseSegment("side left=10-12.5", segment));
    EXPECT_EQ(segment.name, "side left");
    EXPECT_EQ(segment.from_s, 10.0);
    EXPECT_EQ(segment.to_s, 12.5);
    ASSERT_TRUE(parseSegment("a=b=0-1", segment));
    EXPECT_EQ(segment.name, "a=b");
}

TEST(EarSegments, RejectMalformedNamesAndTimes) {
    Segment segment;
    for (const char* text : {"", "x", "=0-1", "x=", "x=1", "x=1-", "x=-1", "x=-1-2", "x=2-1", "x=1-1",
                             "x=a-2", "x=1-2s", "x=0-inf", "x=nan-1", "x=0-1e999", "x= 0-1"}) {
        EXPECT_FALSE(parseSegment(text, segment)) << text;
    }
}

TEST(EarTable, NamesTheLeadingAndTheLouderEarAndTheAngles) {
    const std::string text = sonivex_tool::asText(
        {.rows =
             {
                 {{"front left", 0.0, 2.0},
                  {false, 265.4, 3.26, 0.9},
                  sonivex_tool::LateralAngle{30.4, 35.0, 24.0, 90.0, 31.6, 0.876}},
                 {{"side right", 2.0, 4.0}, {false, -640.0, -0.4, 0.8}, sonivex_tool::LateralAngle{}},
                 {{"bass", 4.0, 6.0}, {false, 0.0, 0.0, 1.0}, {}},
                 {{"pause", 6.0, 8.0}, {}, {}},
             },
         .damage = {}});
    EXPECT_EQ(text,
              "segment     heard    leads        by  louder        by     angle  by delay  clarity        by "
              "level\n"
              "front left  left     left     265 us  left      3.3 dB   +32 deg   +30 deg     0.88  +24 to "
              "+90 deg\n"
              "side right  right    right    640 us  right     0.4 dB     0 deg     0 deg     0.00      0 to "
              "0 deg\n"
              "bass        middle   neither    0 us  neither   0.0 dB         -         -        -           "
              "    -\n"
              "pause       silent\n");
}

}  // namespace
