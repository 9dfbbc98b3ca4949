#include "head_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "interaural_delay.h"
#include "low_frequency_delay.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

using Arrivals = std::array<std::int64_t, kEars>;

std::size_t binAt(double frequency_hz) {
    return static_cast<std::size_t>(std::lround(frequency_hz * kHeadPoints / kRate_hz));
}

TEST(IrgenInterauralDelay, FollowsWoodworthsSphere) {
    // A radius of 8.75 cm at 30 degrees gives 0.0875 / 343 * (pi / 6 + 1 / 2).
    EXPECT_NEAR(woodworthDelay_s(0.0875, horizontalDirection(30.0)), 261.13e-6, 0.01e-6);
    EXPECT_NEAR(woodworthDelay_s(0.0875, horizontalDirection(-150.0)), -261.13e-6, 0.01e-6);
    EXPECT_EQ(woodworthDelay_s(0.0875, {0.0, 0.0, 1.0}), 0.0);
}

TEST(IrgenInterauralDelay, OnsetIsFoundAtATenthOfThePeak) {
    std::vector<double> response(128, 0.0);
    response[20] = 0.05;
    response[50] = -1.0;
    // The interpolated peak at sample 50 starts before it. The sample at 20 is below a tenth of the peak.
    EXPECT_GT(onset_samples(response), 45.0);
    EXPECT_LT(onset_samples(response), 50.0);
    std::vector<double> later(128, 0.0);
    later[25] = 0.05;
    later[55] = -1.0;
    EXPECT_EQ(onset_samples(later) - onset_samples(response), 5.0);
}

// A head with the delays of an exact sphere, given as Data.Delay gives them.
HeadMeasurements sphere(double radius_m) {
    HeadMeasurements head = irgen_test::syntheticHead();
    for (HeadMeasurement& measured : head.directions) {
        const double angle = std::asin(measured.direction.y);
        const double delay_s = radius_m / 343.0 * (angle + std::sin(angle));
        for (std::vector<double>& response : measured.ears) {
            response.assign(128, 0.0);
            response[30] = 1.0;
        }
        measured.delays_samples = {0.0, delay_s * head.rate_hz};
    }
    return head;
}

TEST(IrgenInterauralDelay, FitFindsTheRadiusOfASphereWithinLimits) {
    EXPECT_NEAR(fitHeadRadius_m(sphere(0.0912)), 0.0912, 1e-6);
    EXPECT_EQ(fitHeadRadius_m(sphere(0.05)), 0.07);
    EXPECT_EQ(fitHeadRadius_m(sphere(0.2)), 0.11);
}

TEST(IrgenInterauralDelay, FitTakesDirectionsOfAnyElevationIfTooFewAreHorizontal) {
    HeadMeasurements head = sphere(0.0912);
    const auto is_horizontal = [](const HeadMeasurement& measured) {
        return std::abs(measured.direction.z) < 0.1;
    };
    std::erase_if(head.directions, is_horizontal);
    ASSERT_FALSE(head.directions.empty());
    EXPECT_NEAR(fitHeadRadius_m(head), 0.0912, 1e-6);
}

TEST(IrgenInterauralDelay, PackagedHeadHasARadiusOf84Millimetres) {
    SONIVEX_NEED_PACKAGED_HEAD();
    EXPECT_NEAR(fitHeadRadius_m(*irgen_test::packagedHead()), 0.08426, 0.000005);
}

class IrgenPackagedHeadModel : public testing::Test {
  protected:
    void SetUp() override { SONIVEX_NEED_PACKAGED_HEAD(); }

    static const std::vector<DirectionalTransfer>& transfers() {
        static const std::vector<DirectionalTransfer> all = directionalTransfers(*irgen_test::packagedHead());
        return all;
    }

    static const HeadModel& head() {
        static const HeadModel model(transfers(), 0.08426);
        return model;
    }
};

TEST_F(IrgenPackagedHeadModel, HasTheLevelsOfTheMeasurement) {
    const auto at = [](double azimuth_deg, double frequency_hz) {
        const EarSpectra heard_db = head().transfer_db(horizontalDirection(azimuth_deg));
        return std::array<double, 2>{heard_db[0][binAt(frequency_hz)], heard_db[1][binAt(frequency_hz)]};
    };
    // The levels were computed by other code, which may round the limits of its averages to other bins.
    constexpr double kTolerance_db = 0.05;
    EXPECT_NEAR(at(30.0, 1000.0)[0], 1.56, kTolerance_db);
    EXPECT_NEAR(at(30.0, 1000.0)[1], -6.93, kTolerance_db);
    EXPECT_NEAR(at(30.0, 4000.0)[0], 6.14, kTolerance_db);
    EXPECT_NEAR(at(30.0, 4000.0)[1], -5.26, kTolerance_db);
    EXPECT_NEAR(at(110.0, 2000.0)[0], 1.39, kTolerance_db);
    EXPECT_NEAR(at(110.0, 2000.0)[1], -12.77, kTolerance_db);
    EXPECT_NEAR(at(0.0, 8000.0)[0], -14.95, kTolerance_db);
    // 125 Hz lies a third of the way from bin 5 to bin 6.
    const EarSpectra side_db = head().transfer_db(horizontalDirection(90.0));
    for (const auto& [ear, level_db] : {std::pair{0U, 1.09}, std::pair{1U, -0.75}}) {
        EXPECT_NEAR(side_db[ear][5] + (side_db[ear][6] - side_db[ear][5]) / 3.0, level_db, kTolerance_db);
    }
}

TEST_F(IrgenPackagedHeadModel, HasTheLowFrequencyDelaysOfTheMeasurement) {
    const auto measured_us = [](double azimuth_deg) {
        const Vector3 wanted = horizontalDirection(azimuth_deg);
        const DirectionalTransfer* nearest = nullptr;
        for (const DirectionalTransfer& transfer : transfers()) {
            if (nearest == nullptr || dot(transfer.direction, wanted) > dot(nearest->direction, wanted))
                nearest = &transfer;
        }
        return 1e6 * nearest->low_frequency_delay_s;
    };
    const auto minimum_phase_us = [](double azimuth_deg) {
        const EarSpectra heard_db = head().transfer_db(horizontalDirection(azimuth_deg));
        return 1e6 * lowFrequencyDelay_s({earResponse(heard_db[0]), earResponse(heard_db[1])}, kRate_hz, 0.0);
    };
    // The delays were computed by other code. The grid has steps of 2.6 us; it may take a neighbour.
    constexpr double kTolerance_us = 3.1;
    EXPECT_NEAR(measured_us(30.0), 331.0, kTolerance_us);
    EXPECT_NEAR(measured_us(90.0), 721.0, kTolerance_us);
    EXPECT_NEAR(measured_us(110.0), 688.0, kTolerance_us);
    EXPECT_NEAR(measured_us(140.0), 417.0, kTolerance_us);
    EXPECT_NEAR(minimum_phase_us(30.0), 128.0, kTolerance_us);
    EXPECT_NEAR(minimum_phase_us(90.0), 115.0, kTolerance_us);
    EXPECT_NEAR(minimum_phase_us(110.0), 188.0, kTolerance_us);
    EXPECT_NEAR(minimum_phase_us(140.0), 148.0, kTolerance_us);
}

TEST_F(IrgenPackagedHeadModel, DirectSoundArrivesAsTheMeasuredHeadHearsIt) {
    const auto at = [](double azimuth_deg) {
        return head().directArrivals(horizontalDirection(azimuth_deg), 40.0);
    };
    EXPECT_EQ(at(30.0), (Arrivals{35, 46}));
    EXPECT_EQ(at(110.0), (Arrivals{28, 52}));
    EXPECT_EQ(at(90.0), (Arrivals{26, 55}));
    EXPECT_EQ(at(140.0), (Arrivals{33, 47}));
    EXPECT_EQ(at(0.0), (Arrivals{40, 40}));
    EXPECT_EQ(at(-110.0), (Arrivals{52, 28}));
}

TEST_F(IrgenPackagedHeadModel, DelaysReflectionsByTheSphere) {
    const auto at = [](double azimuth_deg) {
        return head().arrivals(horizontalDirection(azimuth_deg), 40.0);
    };
    EXPECT_EQ(at(30.0), (Arrivals{34, 46}));
    EXPECT_EQ(at(110.0), (Arrivals{28, 53}));
    EXPECT_EQ(at(90.0), (Arrivals{25, 55}));
    EXPECT_EQ(at(140.0), (Arrivals{32, 48}));
    EXPECT_EQ(at(0.0), (Arrivals{40, 40}));
    EXPECT_EQ(at(-110.0), (Arrivals{53, 28}));
}

TEST(IrgenHeadModel, AveragesTheFourNearestDirections) {
    std::vector<DirectionalTransfer> transfers;
    for (const double azimuth_deg : {-2.0, -1.0, 1.0, 2.0, 90.0}) {
        DirectionalTransfer& transfer = transfers.emplace_back();
        transfer.direction = horizontalDirection(azimuth_deg);
        for (std::vector<double>& level_db : transfer.transfer_db)
            level_db.assign(kHeadBins, azimuth_deg * azimuth_deg);
    }
    const HeadModel head(transfers, 0.0875);
    // The weights are 1 / (chord + half a degree)^2. Chords of 1 and 2 degrees give 1 / 1.5^2 and 1 / 2.5^2.
    const double near = 1.0 / (1.5 * 1.5);
    const double far = 1.0 / (2.5 * 2.5);
    const double expected_db = (near * 1.0 + far * 4.0) / (near + far);
    EXPECT_NEAR(head.transfer_db(horizontalDirection(0.0))[0][100], expected_db, 1e-3);
}

// A head whose responses are flat, so that they have no delay of their own, with a measured delay.
HeadModel flatHead(double low_frequency_delay_s) {
    std::vector<DirectionalTransfer> transfers;
    for (const double azimuth_deg : {0.0, 30.0, 60.0, 90.0}) {
        DirectionalTransfer& transfer = transfers.emplace_back();
        transfer.direction = horizontalDirection(azimuth_deg);
        transfer.low_frequency_delay_s = low_frequency_delay_s;
        for (std::vector<double>& level_db : transfer.transfer_db) level_db.assign(kHeadBins, 0.0);
    }
    return {transfers, 0.0875};
}

TEST(IrgenHeadModel, DirectSoundTakesTheMeasuredDelayUpTo30MicrosecondsFromTheSphere) {
    // The sphere delays a source at 30 degrees by 261.1 us, which is 12.5 samples.
    const auto delay = [](double measured_s) {
        const Arrivals at = flatHead(measured_s).directArrivals(horizontalDirection(30.0), 40.0);
        return at[1] - at[0];
    };
    EXPECT_EQ(delay(250e-6), 12);  // 12.0 samples
    EXPECT_EQ(delay(272e-6), 13);  // 13.06 samples
    EXPECT_EQ(delay(400e-6), 14);  // limited to 291.1 us, 13.97 samples
    EXPECT_EQ(delay(0.0), 11);     // limited to 231.1 us, 11.09 samples
}

TEST(IrgenHeadModel, DropsSamplesOutsideTheSignal) {
    std::vector<double> signal(4, 0.0);
    addResponse({1.0, 2.0, 3.0}, 2.0, -1, signal);
    EXPECT_EQ(signal, (std::vector<double>{4.0, 6.0, 0.0, 0.0}));
    addResponse({1.0, 2.0, 3.0}, 1.0, 3, signal);
    EXPECT_EQ(signal, (std::vector<double>{4.0, 6.0, 0.0, 1.0}));
}

}  // namespace
