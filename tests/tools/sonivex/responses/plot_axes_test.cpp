#include "plot_axes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "responses_measures.h"
#include "responses_tables.h"
#include "source_measures.h"

namespace {

using sonivex_plotting::Axis;
using sonivex_tool::allResponseSets;
using sonivex_tool::OctaveMeasures;
using sonivex_tool::ResponseSet;
using sonivex_tool::ResponseSource;
using testing::AllOf;
using testing::Ge;
using testing::Le;

template <typename Visit>
void forEachSource(const Visit& visit) {
    for (const ResponseSet& set : allResponseSets()) {
        for (const ResponseSource& source : set.sources) {
            SCOPED_TRACE(set.name + ", " + source.left.name);
            visit(set, source);
        }
    }
}

auto within(const Axis& axis) {
    return AllOf(Ge(axis.low), Le(axis.high));
}

TEST(ResponsePlotAxes, HoldTheGainsOfEveryCompiledResponse) {
    forEachSource([](const ResponseSet& set, const ResponseSource& source) {
        for (const auto* table : {&source.left, &source.right}) {
            const std::vector<double> gains = gainsOf(*table, set);
            const auto [lowest, highest] = std::minmax_element(gains.begin(), gains.end());
            EXPECT_THAT(*lowest, within(sonivex_tool::gainAxis()));
            EXPECT_THAT(*highest, within(sonivex_tool::gainAxis()));
            for (const auto& point : sonivex_tool::envelope(gains, set.format.rate_hz))
                EXPECT_LE(point.level_db, sonivex_tool::envelopeAxis().high);
            for (const auto& point : sonivex_tool::magnitude(gains, set.format.rate_hz))
                EXPECT_THAT(point.gain_db, within(sonivex_tool::magnitudeAxis())) << point.frequency_hz;
        }
    });
}

TEST(ResponsePlotAxes, HoldTheFiguresOfEveryOctave) {
    forEachSource([](const ResponseSet& set, const ResponseSource& source) {
        const auto figures = sonivex_tool::measureSource(gainsOf(source.left, set),
                                                         gainsOf(source.right, set), set.format.rate_hz);
        for (const OctaveMeasures& octave : figures.octaves) {
            EXPECT_THAT(*octave.direct_to_reverberant_db, within(sonivex_tool::octaveLevelAxis()));
            EXPECT_THAT(*octave.level_difference.direct_db, within(sonivex_tool::octaveLevelAxis()));
            EXPECT_THAT(*octave.level_difference.whole_db, within(sonivex_tool::octaveLevelAxis()));
            EXPECT_THAT(*octave.early_correlation, within(sonivex_tool::correlationAxis()));
        }
    });
}

TEST(ResponsePlotAxes, StateAUnitUnlessTheyShowAPlainNumber) {
    for (const Axis& axis :
         {sonivex_tool::impulseTimeAxis(), sonivex_tool::timeAxis(146.0), sonivex_tool::envelopeAxis(),
          sonivex_tool::frequencyAxis(), sonivex_tool::magnitudeAxis(), sonivex_tool::decayAxis(),
          sonivex_tool::octaveAxis(), sonivex_tool::octaveLevelAxis()}) {
        EXPECT_THAT(axis.label, testing::ContainsRegex("\\((ms|Hz|dB)"));
    }
    EXPECT_EQ(sonivex_tool::gainAxis().label, "gain");
    EXPECT_EQ(sonivex_tool::correlationAxis().label, "correlation");
}

TEST(ResponsePlotAxes, LabelEveryOctave) {
    std::string labels;
    for (const auto& tick : sonivex_tool::octaveAxis().ticks) labels += tick.label + " ";
    EXPECT_EQ(labels, "125 250 500 1k 2k 4k 8k 16k ");
}

}  // namespace
