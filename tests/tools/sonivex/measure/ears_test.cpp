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

TEST(EarTable, NamesTheLeadingAndTheLouderEar) {
    const std::string text = sonivex_tool::asText({
        {{"front left", 0.0, 2.0}, {false, 265.4, 3.26, 0.9}},
        {{"side right", 2.0, 4.0}, {false, -640.0, -0.4, 0.8}},
        {{"bass", 4.0, 6.0}, {}},
    });
    EXPECT_EQ(text,
              "segment     heard     leads            by    louder           by\n"
              "front left  left      left         265 us    left         3.3 dB\n"
              "side right  right     right        640 us    right        0.4 dB\n"
              "bass        silent\n");
}

}  // namespace
