// The compiled impulse responses keep every promise about how they sound. ResponseQuality.PrintsEveryFigure
// prints each measured figure with its limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "quality_rows.h"
#include "reference_head.h"

namespace response_quality {
namespace {

const Responses& responses() {
    static const Responses compiled = compiledResponses();
    return compiled;
}

std::string limitText(const Figure& figure) {
    char text[64];
    if (figure.lowest <= -kNoLimit) {
        std::snprintf(text, sizeof text, "at most %g", figure.highest);
    } else if (figure.highest >= kNoLimit) {
        std::snprintf(text, sizeof text, "at least %g", figure.lowest);
    } else {
        std::snprintf(text, sizeof text, "%g to %g", figure.lowest, figure.highest);
    }
    return text;
}

// Correlations have no unit and need a third decimal.
int decimals(const Row& row) {
    return row.unit.empty() ? 3 : 2;
}

// The limits of a row, or of its first figure if they differ.
std::string limitText(const Row& row) {
    const Figure& first = row.figures.front();
    const bool are_equal =
        std::all_of(row.figures.begin(), row.figures.end(), [&first](const Figure& figure) {
            return figure.lowest == first.lowest && figure.highest == first.highest;
        });
    return limitText(first) + (are_equal ? "" : " and others, see below");
}

void expectKept(const Row& row) {
    EXPECT_FALSE(row.figures.empty()) << row.measure << ": no figure was measured";
    for (const Figure& figure : row.figures) {
        EXPECT_TRUE(figure.holds()) << row.measure << ", " << figure.of << ": " << figure.value << " "
                                    << row.unit << ", must be " << limitText(figure);
    }
}

// Tests whose reference is the measured head.
class ResponseAgainstMeasuredHead : public testing::Test {
  protected:
    void SetUp() override {
        if (!referenceHead().measured.has_value()) GTEST_SKIP() << kNoMeasuredHead;
    }

    static const MeasuredHead& head() { return *referenceHead().measured; }
};

TEST(ResponseQuality, OnsetsAreAsFarApartAsAHeadMakesThem) {
    expectKept(onsetDelays(responses(), referenceHead().radius_m));
}

TEST_F(ResponseAgainstMeasuredHead, LowFrequenciesAreAsFarApart) {
    expectKept(lowFrequencyDelays(responses(), head()));
}

TEST_F(ResponseAgainstMeasuredHead, DirectBassIsAsMuchLouderAtTheNearEar) {
    for (const Row& row : lowLevelRows(responses(), head())) expectKept(row);
}

TEST(ResponseQuality, TrebleIsLouderAtTheNearEar) {
    expectKept(trebleLevelDifferences(responses()));
}

TEST(ResponseQuality, MidrangeIsSlightlyLouderAtTheNearEar) {
    expectKept(middleLevelDifferences(responses()));
}

TEST(ResponseQuality, RoomLeavesEachOctaveLouderAtTheNearEar) {
    const WholeLevelRows rows = wholeLevelRows(responses());
    expectKept(rows.octaves);
    expectKept(rows.each);
}

TEST(ResponseQuality, RoomLeavesSpeechLouderAtTheNearEar) {
    expectKept(wholeLevelRows(responses()).speech);
}

TEST(ResponseQuality, MirroredLoudspeakersAreEquallyFarToTheSide) {
    const WholeLevelRows rows = wholeLevelRows(responses());
    expectKept(rows.mirrored_octaves);
    expectKept(rows.mirrored_speech);
}

TEST(ResponseQuality, CentreReachesBothEarsAtTheSameTime) {
    expectKept(centralDelays(responses()));
}

TEST(ResponseQuality, CentreReachesBothEarsAtTheSameLevel) {
    expectKept(centralLevelDifferences(responses()));
}

TEST(ResponseQuality, DirectSoundIsAboveTheRoomInEveryOctave) {
    const RatioRows rows = ratioRows(responses());
    expectKept(rows.mean);
    expectKept(rows.lowest);
    expectKept(rows.spread);
}

TEST(ResponseQuality, DirectSoundOfTwoChannelModesIsAboveTheRoomInEveryOctave) {
    const SumRatioRows rows = sumRatioRows(responses());
    expectKept(rows.lowest);
    expectKept(rows.spread);
}

TEST(ResponseQuality, EarlySoundIsAsSimilarAtTheEarsAsInAGoodRoom) {
    expectKept(earlyCorrelations(responses()));
}

TEST(ResponseQuality, NoReflectionIsAudibleAsAnEcho) {
    expectKept(strongestReflections(responses()));
}

TEST(ResponseQuality, ReverberationTimeMatchesTheRoomAt500Hz) {
    expectKept(reverberationTimes(responses(), 500.0, -0.3, 0.3));
}

TEST(ResponseQuality, ReverberationTimeMatchesTheRoomAt1And2kHz) {
    expectKept(reverberationTimes(responses(), 1000.0, -0.2, 0.2));
    expectKept(reverberationTimes(responses(), 2000.0, -0.2, 0.2));
}

TEST(ResponseQuality, ReverberationTimeMatchesTheRoomOrIsShorterAt4And8kHz) {
    expectKept(reverberationTimes(responses(), 4000.0, -0.35, 0.2));
    expectKept(reverberationTimes(responses(), 8000.0, -0.35, 0.2));
}

TEST(ResponseQuality, TailDecaysExponentially) {
    expectKept(tailUnevenness(responses()));
}

TEST(ResponseQuality, TailNeverSwells) {
    expectKept(tailRises(responses()));
}

TEST(ResponseQuality, TailIsAsCoherentBetweenTheEarsAsADiffuseField) {
    expectKept(tailCoherenceErrors(responses()));
}

TEST(ResponseQuality, MirroredLoudspeakersHaveTheSameDirectLevel) {
    expectKept(mirroredDirectLevels(responses()));
}

TEST(ResponseQuality, MirroredLoudspeakersHaveTheSameEnergy) {
    expectKept(mirroredEnergies(responses()));
}

TEST(ResponseQuality, MirroredLoudspeakersHaveUncorrelatedTails) {
    expectKept(mirroredTailCorrelations(responses()));
}

TEST(ResponseQuality, FrontPairDoesNotColourMusic) {
    expectKept(frontColourRms(responses()));
    expectKept(frontColourWorst(responses()));
}

TEST(ResponseQuality, OneLoudspeakerOfTypeOneIsNearlyNeutral) {
    expectKept(loudspeakerColours(responses()));
}

TEST(ResponseQuality, PhantomMiddleOfTypeOneIsNeutral) {
    expectKept(phantomColourRms(responses()));
    expectKept(phantomColourWorst(responses()));
}

TEST(ResponseQuality, CingoCrosstalkMatchesLoudspeakers) {
    expectKept(cingoCrosstalk(responses()));
}

TEST(ResponseQuality, MonoProgrammeDiffersBetweenTheEars) {
    expectKept(monoCorrelations(responses()));
}

TEST(ResponseQuality, ResponsesAreSilentBeforeTheFirstArrival) {
    expectKept(energiesBeforeArrival(responses()));
}

TEST(ResponseQuality, EveryResponseFadesOutByItsEnd) {
    expectKept(energiesAtTheEnd(responses()));
}

TEST(ResponseQuality, ConstantInputGivesSilence) {
    expectKept(constantParts(responses()));
}

TEST(ResponseQuality, ModesLiftTheBassByFourSixAndEightDecibels) {
    expectKept(bassLifts(responses()));
}

TEST(ResponseQuality, PinkNoiseKeepsItsLoudness) {
    expectKept(pinkLoudnessChanges(responses()));
}

TEST(ResponseQuality, MusicKeepsItsLoudness) {
    expectKept(musicLoudnessChanges(responses()));
}

TEST(ResponseQuality, LoudspeakersOfASetAreEquallyLoud) {
    expectKept(sourceBalances(responses()));
}

TEST(ResponseQuality, LowFrequencyChannelIsLouderThanTheCentreAndFlat) {
    expectKept(lowFrequencyLevels(responses()));
    expectKept(lowFrequencyRipples(responses()));
}

TEST(ResponseQuality, PrintsEveryFigure) {
    const std::vector<Row> rows = allRows(responses(), referenceHead());
    if (!referenceHead().measured.has_value()) std::printf("%s\n", kNoMeasuredHead);
    std::printf("%-62s %9s %9s  %-4s %s\n", "measure", "lowest", "highest", "unit", "must be");
    for (const Row& row : rows) {
        ASSERT_FALSE(row.figures.empty());
        double lowest = row.figures.front().value;
        double highest = lowest;
        for (const Figure& figure : row.figures) {
            EXPECT_TRUE(std::isfinite(figure.value)) << row.measure << ", " << figure.of;
            lowest = std::min(lowest, figure.value);
            highest = std::max(highest, figure.value);
        }
        std::printf("%-62s %9.*f %9.*f  %-4s %s%s\n", row.measure.c_str(), decimals(row), lowest,
                    decimals(row), highest, row.unit.c_str(), limitText(row).c_str(),
                    row.holds() ? "" : "  FAILS");
    }
    std::printf("\nAll figures\n");
    for (const Row& row : rows) {
        std::printf("%s\n", row.measure.c_str());
        for (const Figure& figure : row.figures) {
            std::printf("    %-46s %9.*f %-4s %s%s\n", figure.of.c_str(), decimals(row), figure.value,
                        row.unit.c_str(), limitText(figure).c_str(), figure.holds() ? "" : "  FAILS");
        }
    }
}

}  // namespace
}  // namespace response_quality
