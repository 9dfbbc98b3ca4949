#include "bench_effects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "failure.h"

namespace {

using sonivex_tool::BenchCase;
using sonivex_tool::BenchEffect;
using sonivex_tool::Failure;

TEST(BenchEffects, RejectAnUnknownNameInsteadOfMeasuringAnotherEffect) {
    // The name is checked before the functions are looked up, so any library serves as the plug-in.
    std::string error;
    const std::shared_ptr<Vorlin::Plugin> library = Vorlin::Plugin::load("libm.so.6", error);
    ASSERT_TRUE(library) << error;
    const BenchCase shape{"reverb", "", 2, 512};
    try {
        const BenchEffect effect(*library, shape);
        FAIL() << "the unknown effect was created";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), testing::HasSubstr("unknown effect \"reverb\""));
    }
}

}  // namespace
