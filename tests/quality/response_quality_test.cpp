// The impulse responses as compiled keep every promise about how they sound. Each measured figure and its
// limits can be read in the output of ResponseQuality.PrintsEveryFigure.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include "quality_rows.h"

namespace response_quality {
namespace {

/** That the delays are held against: a typical head for the committed tables, else the one they were made
 * from. */
double headRadius_m() {
#ifdef SONIVEX_RESPONSE_SOURCE
    const std::string field = "// Head radius: ";
    std::ifstream source(SONIVEX_RESPONSE_SOURCE);
    std::string line;
    while (std::getline(source, line)) {
        if (line.rfind(field, 0) == 0) return std::stod(line.substr(field.size()));
    }
    return std::nan("");  // no figure holds
#else
    return 0.0875;
#endif
}

const Responses& responses() {
    static const Responses compiled = compiledResponses();
    return compiled;
}

std::string limitText(const Figure& figure) {
    char text[64];
    if (figure.lowest < -1e6) {
        std::snprintf(text, sizeof text, "at most %g", figure.highest);
    } else {
        std::snprintf(text, sizeof text, "%g to %g", figure.lowest, figure.highest);
    }
    return text;
}

void expectKept(const Row& row) {
    EXPECT_FALSE(row.figures.empty()) << row.measure << ": nothing was measured";
    for (const Figure& figure : row.figures) {
        EXPECT_TRUE(figure.holds()) << row.measure << ", " << figure.of << ": " << figure.value << " "
                                    << row.unit << ", must be " << limitText(figure);
    }
}

TEST(ResponseQuality, DelaysBetweenTheEarsAreThoseOfAHead) {
    expectKept(interauralDelays(responses(), headRadius_m()));
}

TEST(ResponseQuality, TrebleIsLouderAtTheEarOnTheLoudspeakersSide) {
    expectKept(trebleLevelDifferences(responses()));
}

TEST(ResponseQuality, MiddleFrequenciesAreSlightlyLouderAtTheEarOnTheLoudspeakersSide) {
    expectKept(middleLevelDifferences(responses()));
}

TEST(ResponseQuality, CentreReachesBothEarsAtTheSameTime) {
    expectKept(centralDelays(responses()));
}

TEST(ResponseQuality, CentreReachesBothEarsAtTheSameLevel) {
    expectKept(centralLevelDifferences(responses()));
}

TEST(ResponseQuality, DirectSoundStandsAboveTheRoomAsPlanned) {
    expectKept(directToReverberantRatios(responses()));
}

TEST(ResponseQuality, NoReflectionIsHeardAsAnEcho) {
    expectKept(strongestReflections(responses()));
}

TEST(ResponseQuality, ReverberationTimeIsTheRoomsAt500Hz) {
    expectKept(reverberationTimes(responses(), 500.0, -0.3, 0.3));
}

TEST(ResponseQuality, ReverberationTimeIsTheRoomsAt1And2kHz) {
    expectKept(reverberationTimes(responses(), 1000.0, -0.2, 0.2));
    expectKept(reverberationTimes(responses(), 2000.0, -0.2, 0.2));
}

TEST(ResponseQuality, ReverberationTimeIsTheRoomsOrShorterAt4And8kHz) {
    expectKept(reverberationTimes(responses(), 4000.0, -0.35, 0.2));
    expectKept(reverberationTimes(responses(), 8000.0, -0.35, 0.2));
}

TEST(ResponseQuality, TailDecaysInAStraightLine) {
    expectKept(tailUnevenness(responses()));
}

TEST(ResponseQuality, TailNeverSwellsAgain) {
    expectKept(tailRises(responses()));
}

TEST(ResponseQuality, TailReachesTheEarsLikeADiffuseField) {
    expectKept(tailCoherenceErrors(responses()));
}

TEST(ResponseQuality, MirroredLoudspeakersHaveTheSameDirectLevel) {
    expectKept(mirroredDirectLevels(responses()));
}

TEST(ResponseQuality, MirroredLoudspeakersHaveTheSameEnergy) {
    expectKept(mirroredEnergies(responses()));
}

TEST(ResponseQuality, MirroredLoudspeakersHaveTailsOfTheirOwn) {
    expectKept(mirroredTailCorrelations(responses()));
}

TEST(ResponseQuality, FrontPairLeavesTheColourOfMusicAlone) {
    expectKept(frontColourRms(responses()));
    expectKept(frontColourWorst(responses()));
}

TEST(ResponseQuality, CingoCrosstalkIsThatOfLoudspeakers) {
    expectKept(cingoCrosstalk(responses()));
}

TEST(ResponseQuality, MonoProgrammeIsNotTheSameInBothEars) {
    expectKept(monoCorrelations(responses()));
}

TEST(ResponseQuality, NothingComesBeforeTheFirstArrival) {
    expectKept(energiesBeforeArrival(responses()));
}

TEST(ResponseQuality, EveryResponseHasFadedOutAtItsEnd) {
    expectKept(energiesAtTheEnd(responses()));
}

TEST(ResponseQuality, ConstantInputGivesSilence) {
    expectKept(constantParts(responses()));
}

TEST(ResponseQuality, ModesLiftTheBassByFourSixAndEightDecibels) {
    expectKept(bassLifts(responses()));
}

TEST(ResponseQuality, LoudnessOfPinkSoundStays) {
    expectKept(pinkLoudnessChanges(responses()));
}

TEST(ResponseQuality, LoudnessOfMusicStays) {
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
    const std::vector<Row> rows = allRows(responses(), headRadius_m());
    std::printf("%-58s %9s %9s  %-4s %s\n", "measure", "lowest", "highest", "unit", "must be");
    for (const Row& row : rows) {
        ASSERT_FALSE(row.figures.empty());
        double lowest = row.figures.front().value;
        double highest = lowest;
        for (const Figure& figure : row.figures) {
            EXPECT_TRUE(std::isfinite(figure.value)) << row.measure << ", " << figure.of;
            lowest = std::min(lowest, figure.value);
            highest = std::max(highest, figure.value);
        }
        std::printf("%-58s %9.2f %9.2f  %-4s %s\n", row.measure.c_str(), lowest, highest, row.unit.c_str(),
                    limitText(row.figures.front()).c_str());
    }
    std::printf("\nFigure by figure\n");
    for (const Row& row : rows) {
        std::printf("%s\n", row.measure.c_str());
        for (const Figure& figure : row.figures) {
            std::printf("    %-46s %9.2f %-4s %s\n", figure.of.c_str(), figure.value, row.unit.c_str(),
                        limitText(figure).c_str());
        }
    }
}

}  // namespace
}  // namespace response_quality
