// The compiled impulse responses keep every promise about how they sound. ResponseQuality.PrintsEveryFigure
// prints each measured figure with its limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include "quality_rows.h"

namespace response_quality {
namespace {

// Head radius that the delays are compared with: a typical head's for the committed tables, otherwise that of
// the head the tables were made from.
double headRadius_m() {
#ifdef SONIVEX_RESPONSE_SOURCE
    const std::string field = "// Head radius: ";
    std::ifstream source(SONIVEX_RESPONSE_SOURCE);
    std::string line;
    while (std::getline(source, line)) {
        if (line.rfind(field, 0) == 0) return std::stod(line.substr(field.size()));
    }
    return std::nan("");  // makes every delay fail
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
    EXPECT_FALSE(row.figures.empty()) << row.measure << ": no figure was measured";
    for (const Figure& figure : row.figures) {
        EXPECT_TRUE(figure.holds()) << row.measure << ", " << figure.of << ": " << figure.value << " "
                                    << row.unit << ", must be " << limitText(figure);
    }
}

TEST(ResponseQuality, InterauralDelaysMatchAHead) {
    expectKept(interauralDelays(responses(), headRadius_m()));
}

TEST(ResponseQuality, TrebleIsLouderAtTheNearEar) {
    expectKept(trebleLevelDifferences(responses()));
}

TEST(ResponseQuality, MidrangeIsSlightlyLouderAtTheNearEar) {
    expectKept(middleLevelDifferences(responses()));
}

TEST(ResponseQuality, CentreReachesBothEarsAtTheSameTime) {
    expectKept(centralDelays(responses()));
}

TEST(ResponseQuality, CentreReachesBothEarsAtTheSameLevel) {
    expectKept(centralLevelDifferences(responses()));
}

TEST(ResponseQuality, DirectToReverberantRatioMatchesTheDesign) {
    expectKept(directToReverberantRatios(responses()));
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
    std::printf("\nAll figures\n");
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
