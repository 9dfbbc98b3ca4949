#include "sofa_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mysofa.h>

#include <cerrno>
#include <map>
#include <string>

namespace {

using sonivex_irgen::sofaErrorText;

TEST(IrgenSofaErrors, NameThePartOfTheFileThatIsWrong) {
    const std::map<int, std::string> parts = {
        {MYSOFA_INTERNAL_ERROR, "libmysofa"},
        {MYSOFA_INVALID_FORMAT, "invalid format"},
        {MYSOFA_UNSUPPORTED_FORMAT, "unsupported format"},
        {MYSOFA_NO_MEMORY, "memory"},
        {MYSOFA_READ_ERROR, "read"},
        {MYSOFA_INVALID_ATTRIBUTES, "attributes"},
        {MYSOFA_INVALID_DIMENSIONS, "invalid dimensions"},
        {MYSOFA_INVALID_DIMENSION_LIST, "list of dimensions"},
        {MYSOFA_INVALID_COORDINATE_TYPE, "coordinates"},
        {MYSOFA_ONLY_EMITTER_WITH_ECI_SUPPORTED, "emitter"},
        {MYSOFA_ONLY_DELAYS_WITH_IR_OR_MR_SUPPORTED, "Data.Delay"},
        {MYSOFA_ONLY_THE_SAME_SAMPLING_RATE_SUPPORTED, "sample rate"},
        {MYSOFA_RECEIVERS_WITH_RCI_SUPPORTED, "unsupported receiver"},
        {MYSOFA_RECEIVERS_WITH_CARTESIAN_SUPPORTED, "unsupported receiver"},
        {MYSOFA_INVALID_RECEIVER_POSITIONS, "invalid receiver"},
        {MYSOFA_ONLY_SOURCES_WITH_MC_SUPPORTED, "source"},
    };
    for (const auto& [error, part] : parts) EXPECT_THAT(sofaErrorText(error), testing::HasSubstr(part));
}

TEST(IrgenSofaErrors, OfTheSystemHaveTheSystemsWords) {
    EXPECT_EQ(sofaErrorText(ENOENT), "No such file or directory");
}

TEST(IrgenSofaErrors, ThatNobodyKnowsAreNumbers) {
    EXPECT_EQ(sofaErrorText(10999), "error 10999");
    EXPECT_EQ(sofaErrorText(0), "error 0");
    EXPECT_EQ(sofaErrorText(-2), "error -2");
}

}  // namespace
