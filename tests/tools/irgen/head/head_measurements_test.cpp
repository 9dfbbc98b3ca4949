#include "head_measurements.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

// The reason for rejecting a head, or "" if it is accepted.
std::string reasonAgainst(const HeadMeasurements& head) {
    try {
        checkHeadMeasurements(head);
        return "";
    } catch (const UnusableHead& reason) {
        return reason.what();
    }
}

class IrgenHeadMeasurements : public testing::Test {
  protected:
    HeadMeasurements head_ = irgen_test::syntheticHead();

    void setLength(std::size_t samples) {
        for (HeadMeasurement& measured : head_.directions) {
            for (std::vector<double>& response : measured.ears) {
                const double sample = response[30];
                response.assign(samples, 0.0);
                response[0] = 1.0 + sample;
            }
        }
        // The left ear hears sources on the left louder.
        for (HeadMeasurement& measured : head_.directions) {
            if (measured.direction.y > 0.0) measured.ears[0][0] = 4.0;
        }
    }
};

TEST_F(IrgenHeadMeasurements, AreAcceptedWhenComplete) {
    EXPECT_EQ(reasonAgainst(head_), "");
    SONIVEX_NEED_PACKAGED_HEAD();
    EXPECT_EQ(reasonAgainst(*irgen_test::packagedHead()), "");
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithFewerThan64Directions) {
    head_.directions.resize(63);
    EXPECT_EQ(reasonAgainst(head_), "only 63 directions; at least 64 are needed");
}

TEST_F(IrgenHeadMeasurements, AreRejectedOutsideTheSampleRateRange) {
    for (const double rate_hz : {32000.0, 192000.0}) {
        head_.rate_hz = rate_hz;
        EXPECT_EQ(reasonAgainst(head_), "");
    }
    for (const double rate_hz :
         {31999.0, 192001.0, 0.0, -48000.0, std::numeric_limits<double>::quiet_NaN()}) {
        head_.rate_hz = rate_hz;
        EXPECT_NE(reasonAgainst(head_).find("sample rate"), std::string::npos) << rate_hz;
    }
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithTooShortOrTooLongResponses) {
    for (const std::size_t samples : {64U, 4096U}) {
        setLength(samples);
        EXPECT_EQ(reasonAgainst(head_), "");
    }
    for (const std::size_t samples : {63U, 4097U}) {
        setLength(samples);
        EXPECT_EQ(reasonAgainst(head_), "the responses have " + std::to_string(samples) +
                                            " samples; a head response has 64 to 4096");
    }
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithResponsesOfDifferentLength) {
    head_.directions[7].ears[1].push_back(0.0);
    EXPECT_EQ(reasonAgainst(head_), "the responses differ in length");
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithANonFiniteValue) {
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        HeadMeasurements head = head_;
        head.directions[5].ears[1][3] = bad;
        EXPECT_EQ(reasonAgainst(head), "a response for direction 5 holds a value that is not finite");
        head = head_;
        head.directions[6].delays_samples[0] = bad;
        EXPECT_EQ(reasonAgainst(head), "a delay for direction 6 is not finite");
        head = head_;
        head.directions[8].direction.z = bad;
        EXPECT_EQ(reasonAgainst(head), "direction 8 is not finite");
    }
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithASilentResponse) {
    head_.directions[9].ears[0].assign(128, 0.0);
    EXPECT_EQ(reasonAgainst(head_), "a response for direction 9 is all zeros");
    head_.directions[9].ears[0][3] = 1e-11;
    EXPECT_EQ(reasonAgainst(head_), "a response for direction 9 is too faint to be used");
    head_.directions[9].ears[0][3] = 1e-9;
    EXPECT_EQ(reasonAgainst(head_), "");
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithADelayThatNoHeadHas) {
    for (const double bad : {-1.0, 4097.0, 1e25}) {
        HeadMeasurements head = head_;
        head.directions[7].delays_samples[1] = bad;
        EXPECT_EQ(reasonAgainst(head), "a delay for direction 7 is outside 0 to 4096 samples") << bad;
    }
    head_.directions[7].delays_samples[1] = 4096.0;
    EXPECT_EQ(reasonAgainst(head_), "");
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithAGapAroundALoudspeaker) {
    std::erase_if(head_.directions, [](const HeadMeasurement& measured) {
        return dot(measured.direction, horizontalDirection(-110.0)) > 0.96;  // 16.3 degrees
    });
    EXPECT_EQ(reasonAgainst(head_), "no direction within 15 degrees of azimuth -110, elevation 0");
}

TEST_F(IrgenHeadMeasurements, AreRejectedWithSwappedEars) {
    for (HeadMeasurement& measured : head_.directions) std::swap(measured.ears[0], measured.ears[1]);
    EXPECT_EQ(reasonAgainst(head_), "the left and right ears are swapped");
}

}  // namespace
