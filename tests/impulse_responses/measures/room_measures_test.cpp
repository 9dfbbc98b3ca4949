// Tests of the measures of direct sound and room, on signals whose figures are known.
#include <gtest/gtest.h>

#include <array>
#include <span>
#include <string>

#include "decay.h"
#include "ratios.h"
#include "test_signals.h"

namespace response_quality {
namespace {

TEST(RoomMeasures, DirectSoundInPlaceIsSilentAround2500us) {
    const Ears ears{Signal(1000, 1.0), sum(impulse(1000, 50), impulse(1000, 50 + 120), 1.0)};
    const Ears direct = directSoundInPlace(ears);
    EXPECT_EQ(direct[0].size(), 120u);
    ASSERT_EQ(direct[1].size(), 50u + 120u);
    EXPECT_EQ(direct[1][50], 1.0);
    EXPECT_EQ(energyOf(direct[1]), 1.0);
}

TEST(RoomMeasures, RatioIsThatOfTheDirectSoundToAnEcho) {
    // An echo of half the amplitude 10 ms later is 6 dB softer in every octave.
    const std::array<Signal, 2> responses{sum(impulse(4096, 40), impulse(4096, 520), 0.5),
                                          sum(impulse(4096, 55), impulse(4096, 535), 1.0)};
    for (const double ratio_db : directToReverberant_db(std::span(responses).first(1)))
        EXPECT_NEAR(ratio_db, 6.0206, 1e-4);
    // Both together have a direct energy of 2 and a reverberant energy of 1.25.
    for (const double ratio_db : directToReverberant_db(responses)) EXPECT_NEAR(ratio_db, 2.0412, 1e-4);
}

TEST(RoomMeasures, RatioMatchesTheSyntheticRoom) {
    EXPECT_NEAR(meanRatio_db(directToReverberant_db(syntheticRoom(0.27))), 8.0, 0.7) << "seed " << kSeed;
}

TEST(RoomMeasures, RatiosAreSummedUpByTheirMeanLowestAndSpread) {
    const OctaveRatios ratios_db{8.0, 6.0, 4.0, 10.0, 1.0};
    EXPECT_NEAR(meanRatio_db(ratios_db), 7.0, 1e-12);  // without 8 kHz
    EXPECT_NEAR(lowestRatio_db(ratios_db), 1.0, 1e-12);
    EXPECT_NEAR(ratioSpread_db(ratios_db), 9.0, 1e-12);
    EXPECT_NEAR(meanOf(ratios_db, {6.0, 6.0, 6.0, 6.0, 6.0})[3], 8.0, 1e-12);
}

TEST(RoomMeasures, ReverberationTimeMatchesTheSyntheticRoom) {
    for (const double time_s : {0.15, 0.27}) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + ", time " + std::to_string(time_s));
        const Ears ears = syntheticRoom(time_s);
        for (const double octave_hz : {1000.0, 2000.0, 4000.0, 8000.0}) {
            EXPECT_NEAR(reverberationTime_s(ears, octave_hz, 0.25), time_s, 0.1 * time_s) << octave_hz;
        }
        EXPECT_LT(tailUnevenness_db(ears, 0.25), 1.0);
        EXPECT_LT(tailRise_db(ears, 0.25), 0.0);
    }
}

TEST(RoomMeasures, ReverberationTimeDoesNotDependOnTheTableLength) {
    Ears ears = syntheticRoom(0.27);
    for (Signal& ear : ears) ear.resize(7000);
    EXPECT_NEAR(reverberationTime_s(ears, 2000.0, 0.3), 0.27, 0.1 * 0.27) << "seed " << kSeed;
}

TEST(RoomMeasures, StrongestReflectionIsTheEchoAfterTheDirectSound) {
    Ears ears{impulse(4096, 40), impulse(4096, 52)};
    ears[0][40 + 400] = 0.25;
    ears[1][52 + 400] = 0.25;
    ears[0][40 + 800] = 1.0;  // later than 15 ms
    EXPECT_NEAR(strongestReflection_db(ears), -12.04, 0.1);
}

}  // namespace
}  // namespace response_quality
