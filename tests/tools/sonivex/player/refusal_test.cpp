// Filters that do not begin.
#include <gtest/gtest.h>

#include <string>

#include "effect_chain.h"
#include "failure.h"
#include "plugin_search.h"
#include "tools/sonivex/steered_filter/steering.h"

namespace {

using namespace sonivex_tool;

// Returns why a chain for a stream of this rate cannot be made.
std::string refusalAt(int rate_hz) {
    AudioSpec spec;
    spec.format = AV_SAMPLE_FMT_S16;
    spec.rate_hz = rate_hz;
    spec.layout = defaultLayout(1);
    FilterSettings settings;
    settings.chain = {findEffect("normalizer")};
    try {
        const EffectChain chain(settings, loadPlugin(SONIVEX_STEERED_FILTER), spec, [](const FramePtr&) {});
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::FilterFailed);
        return failure.what();
    }
    return {};
}

TEST(FilterRunRefusal, SaysThatTheFilterDoesNotBegin) {
    EXPECT_EQ(refusalAt(48000), "");
    EXPECT_EQ(refusalAt(test::kNoFilterRate_hz), "cannot initialise the filter (--verbose shows its log)");
}

TEST(FilterRunRefusal, SaysThatTheFilterRefusesItsOptions) {
    EXPECT_EQ(refusalAt(test::kNoOptionsRate_hz),
              "the filter rejected its options (--verbose shows its log)");
}

}  // namespace
