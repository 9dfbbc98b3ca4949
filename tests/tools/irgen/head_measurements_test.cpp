#include "head_measurements.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "synthetic_head.h"

namespace {

using namespace sonivex_irgen;

/** The reason for which a head is refused, or "" if it is not. */
std::string reasonAgainst(const HeadMeasurements& head) {
    try {
        checkHeadMeasurements(head);
        return "";
    } catch (const UnusableHead& reason) {
        return reason.what();
    }
}

class Head : public testing::Test {
  protected:
    HeadMeasurements mHead = irgen_test::syntheticHead();

    void setLength(std::size_t samples) {
        for (HeadMeasurement& measured : mHead.directions) {
            for (std::vector<double>& response : measured.ears) {
                const double sample = response[30];
                response.assign(samples, 0.0);
                response[0] = 1.0 + sample;
            }
        }
        // Louder on the left from the left.
        for (HeadMeasurement& measured : mHead.directions) {
            if (measured.direction.y > 0.0) measured.ears[0][0] = 4.0;
        }
    }
};

TEST_F(Head, IsAcceptedWhenComplete) {
    EXPECT_EQ(reasonAgainst(mHead), "");
    SONIVEX_NEED_PACKAGED_HEAD();
    EXPECT_EQ(reasonAgainst(*irgen_test::packagedHead()), "");
}

TEST_F(Head, IsRefusedWithFewerThan64Directions) {
    mHead.directions.resize(63);
    EXPECT_EQ(reasonAgainst(mHead), "only 63 directions, 64 are needed");
}

TEST_F(Head, IsRefusedOutsideTheRates) {
    for (const double rate_hz : {32000.0, 192000.0}) {
        mHead.rate_hz = rate_hz;
        EXPECT_EQ(reasonAgainst(mHead), "");
    }
    for (const double rate_hz :
         {31999.0, 192001.0, 0.0, -48000.0, std::numeric_limits<double>::quiet_NaN()}) {
        mHead.rate_hz = rate_hz;
        EXPECT_NE(reasonAgainst(mHead).find("sampling rate"), std::string::npos) << rate_hz;
    }
}

TEST_F(Head, IsRefusedWithResponsesTooShortOrTooLong) {
    for (const std::size_t samples : {64U, 4096U}) {
        setLength(samples);
        EXPECT_EQ(reasonAgainst(mHead), "");
    }
    for (const std::size_t samples : {63U, 4097U}) {
        setLength(samples);
        EXPECT_EQ(reasonAgainst(mHead),
                  "responses of " + std::to_string(samples) + " samples; a head's have 64 to 4096");
    }
}

TEST_F(Head, IsRefusedWithResponsesOfUnequalLength) {
    mHead.directions[7].ears[1].push_back(0.0);
    EXPECT_EQ(reasonAgainst(mHead), "responses of unequal length");
}

TEST_F(Head, IsRefusedWithAValueThatIsNotFinite) {
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        HeadMeasurements head = mHead;
        head.directions[5].ears[1][3] = bad;
        EXPECT_EQ(reasonAgainst(head), "a response to direction 5 holds a value that is not finite");
        head = mHead;
        head.directions[6].delays_samples[0] = bad;
        EXPECT_EQ(reasonAgainst(head), "a delay of direction 6 is not finite");
        head = mHead;
        head.directions[8].direction.z = bad;
        EXPECT_EQ(reasonAgainst(head), "direction 8 is not finite");
    }
}

TEST_F(Head, IsRefusedWithASilentResponse) {
    mHead.directions[9].ears[0].assign(128, 0.0);
    EXPECT_EQ(reasonAgainst(mHead), "a response to direction 9 is all zero");
}

TEST_F(Head, IsRefusedWithAGapAroundALoudspeaker) {
    std::erase_if(mHead.directions, [](const HeadMeasurement& measured) {
        return dot(measured.direction, horizontalDirection(-110.0)) > 0.96;  // 16.3 degrees
    });
    EXPECT_EQ(reasonAgainst(mHead), "no direction within 15 degrees of azimuth -110, elevation 0");
}

TEST_F(Head, IsRefusedWithItsEarsSwapped) {
    for (HeadMeasurement& measured : mHead.directions) std::swap(measured.ears[0], measured.ears[1]);
    EXPECT_EQ(reasonAgainst(mHead), "left and right are swapped");
}

}  // namespace
