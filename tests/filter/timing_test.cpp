// Checks what the filter tells the player about its delay and its tail. The lengths are those of
// docs/embedding.md; MegaBass convolves twice, with 7000 and 6000 samples.
#include <gtest/gtest.h>

#include <set>

#include "filter/faults/filter_under_test.h"
#include "vorlin/effect_timing.h"

namespace test {
namespace {

using Vorlin::FilterTiming;

FilterTiming timingOf(FilterUnderTest& filter, int channels, int rate_hz) {
    const auto* timed = dynamic_cast<const Vorlin::ITimedFilter*>(&*filter);
    if (timed == nullptr) {
        ADD_FAILURE() << "the filter does not know its timing";
        return {};
    }
    return timed->timing({.format = 1, .channels = channels, .sample_rate = rate_hz, .nb_samples = 7});
}

void expectTiming(const FilterTiming& timing, int block, int own_delay, int tail) {
    EXPECT_EQ(timing.block_frames, block);
    EXPECT_EQ(timing.own_delay_frames, own_delay);
    EXPECT_EQ(timing.tail_frames, tail);
}

TEST(FilterTimingOf, SurroundDependsOnItsTypeAndOnTheChannels) {
    FilterUnderTest filter;
    filter.options(R"({"enable_surround": true})");
    expectTiming(timingOf(filter, 1, 48000), 240, 0, 13000);
    expectTiming(timingOf(filter, 2, 44100), 240, 0, 13000);
    expectTiming(timingOf(filter, 6, 48000), 240, 0, 8544);
    expectTiming(timingOf(filter, 8, 48000), 240, 0, 8640);
    filter.options(R"({"surround_effect_type": "MegaBass"})");
    expectTiming(timingOf(filter, 8, 48000), 240, 0, 7000 + 6000 - 1);
}

TEST(FilterTimingOf, TheOtherEffectsHasNoTail) {
    FilterUnderTest filter;
    filter.options(R"({"enable_dialoguenhance": true})");
    expectTiming(timingOf(filter, 2, 48000), 512, 1536, 0);
    filter.options(R"({"enable_normalizer": true})");
    expectTiming(timingOf(filter, 8, 16000), 512, 0, 0);
}

TEST(FilterTimingOf, AStreamThatNoEffectProcessesIsZero) {
    FilterUnderTest filter;
    expectTiming(timingOf(filter, 2, 48000), 0, 0, 0);
    filter.options(R"({"enable_dialoguenhance": true})");
    expectTiming(timingOf(filter, 6, 48000), 0, 0, 0);
    expectTiming(timingOf(filter, 2, 32000), 0, 0, 0);
    expectTiming(timingOf(filter, 0, 0), 0, 0, 0);
    expectTiming(timingOf(filter, -1, -1), 0, 0, 0);
    filter.options(R"({"enable_dialoguenhance": false})");
    expectTiming(timingOf(filter, 2, 48000), 0, 0, 0);
}

TEST(FilterTimingOf, AnEffectDoesNotDependOnABypass) {
    FilterUnderTest filter;
    filter.options(R"({"enable_normalizer": true})");
    for (const bool invalid : {true, false}) {
        filter->setInvalid(invalid);
        expectTiming(timingOf(filter, 2, 48000), 512, 0, 0);
    }
}

TEST(FilterTimingOf, EveryEffectHasAnotherNumber) {
    FilterUnderTest filter;
    std::set<int> numbers{timingOf(filter, 2, 48000).effect};
    for (const char* effect : {"enable_surround", "enable_dialoguenhance", "enable_normalizer"}) {
        filter.options("{\"" + std::string(effect) + "\": true}");
        numbers.insert(timingOf(filter, 2, 48000).effect);
    }
    EXPECT_EQ(numbers.size(), 4U);
}

}  // namespace
}  // namespace test
