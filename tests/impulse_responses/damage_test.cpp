// Each quality row detects the defect that it is there for: every damage breaks the row beside it.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "damages.h"
#include "reference_head.h"

namespace response_quality {

void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}

namespace {

class ResponseDamage : public testing::TestWithParam<Damage> {};

TEST_P(ResponseDamage, BreaksItsQualityRow) {
    if (GetParam().needs_measured_head && !referenceHead().measured.has_value()) {
        GTEST_SKIP() << kNoMeasuredHead;
    }
    Responses responses = oneSetOfEachKind();
    ASSERT_TRUE(GetParam().row(responses).holds()) << "the row fails before the damage";
    GetParam().spoil(responses);
    EXPECT_FALSE(GetParam().row(responses).holds());
}

const auto kNameOf = [](const auto& damage) { return std::string(damage.param.name); };

INSTANTIATE_TEST_SUITE_P(Direction, ResponseDamage, testing::ValuesIn(directionDamages()), kNameOf);
INSTANTIATE_TEST_SUITE_P(Room, ResponseDamage, testing::ValuesIn(roomDamages()), kNameOf);
INSTANTIATE_TEST_SUITE_P(Tone, ResponseDamage, testing::ValuesIn(toneDamages()), kNameOf);

}  // namespace
}  // namespace response_quality
