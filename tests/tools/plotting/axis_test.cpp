#include "axis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using sonivex_plotting::Axis;
using sonivex_plotting::frequencyAxis;
using sonivex_plotting::linearAxis;
using sonivex_plotting::logarithmicAxis;
using sonivex_plotting::niceStep;
using testing::ElementsAre;

std::vector<std::string> labelsOf(const Axis& axis) {
    std::vector<std::string> labels;
    for (const auto& tick : axis.ticks) labels.push_back(tick.label);
    return labels;
}

TEST(Axis, LabelsEveryMultipleOfTheStepWithTheDecimalsOfTheStep) {
    EXPECT_THAT(labelsOf(linearAxis(-0.3, 0.5, 0.25, "")), ElementsAre("-0.25", "0.00", "0.25", "0.50"));
    EXPECT_THAT(labelsOf(linearAxis(0.0, 1.0, 0.5, "")), ElementsAre("0.0", "0.5", "1.0"));
    EXPECT_THAT(labelsOf(linearAxis(-20.0, 5.0, 10.0, "")), ElementsAre("-20", "-10", "0"));
}

TEST(Axis, PlacesItsEndsAtZeroAndOne) {
    const Axis linear = linearAxis(-10.0, 30.0, 10.0, "");
    EXPECT_DOUBLE_EQ(linear.place(-10.0), 0.0);
    EXPECT_DOUBLE_EQ(linear.place(0.0), 0.25);
    EXPECT_DOUBLE_EQ(linear.place(30.0), 1.0);
    EXPECT_DOUBLE_EQ(linear.place(70.0), 2.0);
}

TEST(Axis, PlacesEqualRatiosAtEqualDistancesIfItIsLogarithmic) {
    const Axis axis = logarithmicAxis(10.0, 10000.0, {{100.0, "100"}}, "");
    EXPECT_NEAR(axis.place(10.0), 0.0, 1e-12);
    EXPECT_NEAR(axis.place(100.0), 1.0 / 3.0, 1e-12);
    EXPECT_NEAR(axis.place(1000.0), 2.0 / 3.0, 1e-12);
}

TEST(Axis, LabelsFrequenciesByOneTwoAndFiveWhereTheyLieOnIt) {
    const std::vector<std::string> all = {"20", "50", "100", "200", "500", "1k", "2k", "5k", "10k", "20k"};
    EXPECT_EQ(labelsOf(frequencyAxis(20.0, 20000.0)), all);
    EXPECT_EQ(labelsOf(frequencyAxis(1.0, 96000.0)), all);
    EXPECT_THAT(labelsOf(frequencyAxis(40.0, 4000.0)), ElementsAre("50", "100", "200", "500", "1k", "2k"));
    EXPECT_DOUBLE_EQ(frequencyAxis(20.0, 20000.0).ticks.at(5).value, 1000.0);
}

TEST(Axis, ChoosesStepsOfOneTwoOrFive) {
    EXPECT_DOUBLE_EQ(niceStep(271.0, 6.0), 50.0);
    EXPECT_DOUBLE_EQ(niceStep(6.0, 6.0), 1.0);
    EXPECT_DOUBLE_EQ(niceStep(0.9, 6.0), 0.2);
    EXPECT_DOUBLE_EQ(niceStep(59.0, 10.0), 10.0);
}

TEST(FixedNumbers, GiveZeroNoSign) {
    EXPECT_EQ(sonivex_plotting::fixed(-0.04, 1), "0.0");
    EXPECT_EQ(sonivex_plotting::fixed(-0.06, 1), "-0.1");
    EXPECT_EQ(sonivex_plotting::fixed(1234.5678, 2), "1234.57");
}

}  // namespace
