#include <gtest/gtest.h>

#include <vector>

#include "measured_report.h"

namespace {

using sonivex_tool::matchLoudness;
using sonivex_tool::MeasuredVersion;

MeasuredVersion heard(std::optional<double> lufs, std::optional<double> peak_dbtp) {
    MeasuredVersion version;
    version.heard.integrated_lufs = lufs;
    version.heard.true_peak_dbtp = peak_dbtp;
    return version;
}

TEST(LoudnessMatching, LowersTheLouderVersionsToTheSoftest) {
    std::vector<MeasuredVersion> versions{heard(-30.0, -12.0), heard(-16.0, -2.0), heard(-20.0, -5.0)};
    matchLoudness(versions);
    EXPECT_DOUBLE_EQ(versions[0].matching_gain_db, 0.0);
    EXPECT_DOUBLE_EQ(versions[1].matching_gain_db, -14.0);
    EXPECT_DOUBLE_EQ(versions[2].matching_gain_db, -10.0);
}

TEST(LoudnessMatching, LeavesRoomForTheHighestPeak) {
    std::vector<MeasuredVersion> versions{heard(-20.0, 3.0), heard(-18.0, -3.0)};
    matchLoudness(versions);
    EXPECT_DOUBLE_EQ(versions[0].matching_gain_db, -4.0);  // 3 dBTP to -1 dBTP
    EXPECT_DOUBLE_EQ(versions[1].matching_gain_db, -6.0);
}

TEST(LoudnessMatching, LeavesSilenceAlone) {
    std::vector<MeasuredVersion> versions{heard({}, {}), heard({}, {})};
    matchLoudness(versions);
    EXPECT_EQ(versions[0].matching_gain_db, 0.0);
    EXPECT_EQ(versions[1].matching_gain_db, 0.0);
}

}  // namespace
