#include "directional_transfer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "octave_smoothing.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

std::size_t binAt(double frequency_hz) {
    return static_cast<std::size_t>(std::lround(frequency_hz * kHeadPoints / kRate_hz));
}

TEST(IrgenOctaveSmoothing, AveragesTheBinsAroundEachBin) {
    std::vector<double> power(101, 0.0);
    power[40] = 21.0;
    // +-1/4 octave around bin 40 spans bins 34 (33.6) to 48 (47.6): 15 bins.
    const std::vector<double> smoothed = smoothOverOctaves(power, 0.25);
    EXPECT_DOUBLE_EQ(smoothed[40], 21.0 / 15.0);
    EXPECT_EQ(smoothed[30], 0.0);
    EXPECT_EQ(smoothed[60], 0.0);
    EXPECT_DOUBLE_EQ(smoothOverOctaves(std::vector<double>(64, 3.0), 0.5)[63], 3.0);
}

TEST(IrgenDirectionalTransfer, IsTheLevelRelativeToTheAverageOfAllDirections) {
    // The left ear hears the power 2^y, the right ear 2^-y. The density weights make the average one over the
    // covered part of the sphere. It is slightly above 1, so the front is slightly below 0 dB.
    const HeadMeasurements head = irgen_test::syntheticHead();
    const std::vector<DirectionalTransfer> transfers = directionalTransfers(head);
    ASSERT_EQ(transfers.size(), head.directions.size());
    const std::size_t bin = binAt(1000.0);
    const double reference = transfers[0].transfer_db[0][bin];  // from the front
    EXPECT_LT(reference, 0.0);
    EXPECT_GT(reference, -1.0);
    for (const DirectionalTransfer& transfer : transfers) {
        const double side_db = 10.0 * std::log10(2.0) * transfer.direction.y;
        ASSERT_NEAR(transfer.transfer_db[0][bin], reference + side_db, 1e-9);
        ASSERT_NEAR(transfer.transfer_db[1][bin], reference - side_db, 1e-9);
    }
}

TEST(IrgenDirectionalTransfer, FadesOutInTheBassAndStaysConstantAbove15kHz) {
    const std::vector<DirectionalTransfer> transfers = directionalTransfers(irgen_test::syntheticHead());
    for (const DirectionalTransfer& transfer : transfers) {
        const std::vector<double>& level_db = transfer.transfer_db[0];
        ASSERT_EQ(level_db.size(), kHeadBins);
        for (std::size_t k = 0; k <= binAt(46.9); ++k) ASSERT_EQ(level_db[k], 0.0) << k;
        // Half a cosine over log f: 0.5 (1 + cos(pi log(150 / f) / log(150 / 50))).
        ASSERT_NEAR(level_db[binAt(70.3)], 0.2195 * level_db[binAt(1000.0)], 1e-3);
        ASSERT_NEAR(level_db[binAt(93.75)], 0.6124 * level_db[binAt(1000.0)], 1e-3);
        ASSERT_NEAR(level_db[binAt(164.1)], level_db[binAt(1000.0)], 1e-9);
    }
    SONIVEX_NEED_PACKAGED_HEAD();
    for (const DirectionalTransfer& transfer : directionalTransfers(*irgen_test::packagedHead())) {
        for (const std::vector<double>& level_db : transfer.transfer_db) {
            for (std::size_t k = binAt(15000.0); k < kHeadBins; ++k)
                ASSERT_EQ(level_db[k], level_db[kHeadBins - 1]);
        }
    }
}

TEST(IrgenDirectionalTransfer, IsLimitedToMinus30To15Decibels) {
    HeadMeasurements head = irgen_test::syntheticHead();
    for (double& sample : head.directions[0].ears[0]) sample *= 100.0;
    for (double& sample : head.directions[1].ears[0]) sample *= 1e-6;
    const std::vector<DirectionalTransfer> transfers = directionalTransfers(head);
    EXPECT_EQ(transfers[0].transfer_db[0][binAt(2000.0)], 15.0);
    EXPECT_EQ(transfers[1].transfer_db[0][binAt(2000.0)], -30.0);
}

TEST(IrgenDirectionalTransfer, DoesNotDependOnTheMeasuringLoudspeaker) {
    HeadMeasurements head = irgen_test::syntheticHead();
    const std::vector<DirectionalTransfer> before = directionalTransfers(head);
    // The other loudspeaker is louder and has an echo one sample later.
    for (HeadMeasurement& measured : head.directions) {
        for (std::vector<double>& response : measured.ears) {
            for (std::size_t n = response.size() - 1; n > 0; --n)
                response[n] = 3.0 * (response[n] + 0.5 * response[n - 1]);
        }
    }
    const std::vector<DirectionalTransfer> after = directionalTransfers(head);
    for (std::size_t m = 0; m < before.size(); m += 31) {
        for (std::size_t k = 0; k < kHeadBins; ++k) {
            ASSERT_NEAR(after[m].transfer_db[1][k], before[m].transfer_db[1][k], 1e-9) << m << ", bin " << k;
        }
    }
}

}  // namespace
