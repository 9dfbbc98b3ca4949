#include "timestamp_repair.h"

#include <gtest/gtest.h>

#include "av_objects.h"

namespace sonivex_tool {

// Printed by a failing test.
void PrintTo(const PacketTimes& times, std::ostream* stream) {
    *stream << "pts " << times.pts << " dts " << times.dts << " duration " << times.duration;
}

}  // namespace sonivex_tool

namespace {

using namespace sonivex_tool;

constexpr int64_t kNone = AV_NOPTS_VALUE;
constexpr bool kStrict = true;
constexpr bool kNotStrict = false;

PacketTimes times(int64_t pts, int64_t dts) {
    return {pts, dts, 40};
}

TEST(TimestampRepair, LeavesGoodTimesAlone) {
    TimestampRepair repair(kStrict, 1);
    for (const PacketTimes& good :
         {times(0, -40), times(120, 0), times(40, 40), times(80, 80), times(160, 120)})
        EXPECT_EQ(repair.repair(good), good);
    EXPECT_EQ(repair.repaired(), 0U);
}

TEST(TimestampRepair, FillsInDecodingTimesWithoutCountingThem) {
    TimestampRepair plain(kStrict, 0);
    EXPECT_EQ(plain.repair(times(80, kNone)), times(80, 80));
    EXPECT_EQ(plain.repair(times(120, kNone)), times(120, 120));
    EXPECT_EQ(plain.repaired(), 0U);

    // Two frames are decoded before the first is shown; the third packet has a time again.
    TimestampRepair reordered(kStrict, 2);
    EXPECT_EQ(reordered.repair(times(21, kNone)), times(21, -59));
    EXPECT_EQ(reordered.repair(times(141, kNone)), times(141, -19));
    EXPECT_EQ(reordered.repair(times(61, 21)), times(61, 21));
    EXPECT_EQ(reordered.repaired(), 0U);
}

TEST(TimestampRepair, PacketsWithoutAnyTimeFollowOneAnother) {
    TimestampRepair repair(kStrict, 0);
    EXPECT_EQ(repair.repair(times(kNone, kNone)), times(0, 0));
    EXPECT_EQ(repair.repair(times(kNone, kNone)), times(40, 40));
    EXPECT_EQ(repair.repaired(), 2U);
}

TEST(TimestampRepair, DecodingTimesGrow) {
    TimestampRepair strict(kStrict, 0);
    strict.repair(times(40, 40));
    EXPECT_EQ(strict.repair(times(40, 40)), times(41, 41));
    EXPECT_EQ(strict.repair(times(0, 0)), times(42, 42));
    EXPECT_EQ(strict.repair(times(80, 80)), times(80, 80));
    EXPECT_EQ(strict.repaired(), 2U);

    TimestampRepair lenient(kNotStrict, 0);
    lenient.repair(times(40, 40));
    EXPECT_EQ(lenient.repair(times(40, 40)), times(40, 40));
    EXPECT_EQ(lenient.repaired(), 0U);
}

TEST(TimestampRepair, NothingIsShownBeforeItIsDecoded) {
    TimestampRepair repair(kStrict, 0);
    repair.repair(times(0, 0));
    // The next packet is expected at 40. A decoding time far ahead is the wrong one of the two.
    EXPECT_EQ(repair.repair(times(40, 9000)), times(40, 40));
    EXPECT_EQ(repair.repaired(), 1U);
}

TEST(TimestampRepair, AbsurdTimesCountAsUnknown) {
    TimestampRepair repair(kStrict, 0);
    repair.repair(times(0, 0));
    EXPECT_EQ(repair.repair({INT64_MAX - 1, INT64_MAX - 1, INT64_MAX}), (PacketTimes{40, 40, 0}));
    EXPECT_EQ(repair.repair({INT64_MIN + 1, INT64_MIN + 1, -5}), (PacketTimes{41, 41, 0}));
}

}  // namespace
