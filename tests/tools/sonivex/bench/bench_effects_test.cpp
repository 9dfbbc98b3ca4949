#include "bench_effects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "failure.h"

namespace {

using sonivex_tool::BenchCase;
using sonivex_tool::BenchEffect;
using sonivex_tool::ExitCode;
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

// Returns why an effect of the faulty plug-in cannot be made or called.
std::string faultOf(const BenchCase& shape, ExitCode expected_code) {
    std::string error;
    const std::shared_ptr<Vorlin::Plugin> plugin = Vorlin::Plugin::load(SONIVEX_FAULTY_EFFECTS, error);
    if (plugin == nullptr) return error;
    try {
        BenchEffect effect(*plugin, shape);
        effect.process(std::vector<int16_t>(2UL * 512));
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), expected_code);
        return failure.what();
    }
    return {};
}

TEST(BenchEffects, NameWhatAPluginLacks) {
    EXPECT_EQ(faultOf({"dialogue", "", 2, 512}, ExitCode::EffectMissing),
              "the plug-in does not export aem_CreateDialoguEnhance");
}

TEST(BenchEffects, FailWithAnEffectThatCannotBeMade) {
    EXPECT_EQ(faultOf({"normalizer", "", 1, 512}, ExitCode::FilterFailed),
              "the plug-in cannot create the effect \"normalizer\"");
}

TEST(BenchEffects, FailWithAnEffectThatReturnsTooLittle) {
    EXPECT_EQ(faultOf({"normalizer", "", 2, 512}, ExitCode::FilterFailed),
              "the effect \"normalizer\" did not return all samples of a call");
}

}  // namespace
