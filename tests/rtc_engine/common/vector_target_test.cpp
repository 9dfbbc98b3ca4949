#include <gtest/gtest.h>

#include <string>

#include "sonivex/vectors.h"
#include "support/each_vector_target.h"

namespace {

// Common name of the instruction set that Highway calls `target`, and the number of doubles per register.
std::string expectedFor(const std::string& target) {
    if (target.rfind("AVX3", 0) == 0) return "AVX-512, 8 doubles";
    if (target == "AVX2") return "AVX2, 4 doubles";
    if (target.rfind("SS", 0) == 0) return "SSE, 2 doubles";
    if (target.rfind("NEON", 0) == 0) return "NEON, 2 doubles";
    return "no vector instructions";
}

TEST(VectorTarget, NamesTheInstructionSetThatTheKernelsAreRestrictedTo) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        test::dispatchTo(target);
        const char* const name = hwy::TargetName(target);
        EXPECT_EQ(aem_VectorTarget(), expectedFor(name)) << name;
    }
    test::dispatchTo(0);
}

TEST(VectorTarget, IsTheBestOfThisProcessorUnlessRestricted) {
    test::dispatchTo(0);
    EXPECT_EQ(aem_VectorTarget(), expectedFor(hwy::TargetName(hwy::SupportedAndGeneratedTargets().front())));
}

}  // namespace
