// The curve of the loudness without memory.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "failing_calls/failing_memory.h"
#include "loudness_curve.h"
#include "tools/sonivex/audio_samples.h"

namespace {

// A meter that went on would leave out a part of the sound.
TEST(LoudnessCurvesWithoutMemory, DoNotGoOn) {
    constexpr int kFrames = 48000;
    const auto loud = test::floatFrame(2, kFrames, [](int i, int) { return i % 100 < 50 ? 0.5F : -0.5F; });
    int first = 1;
    for (;; ++first) {
        SCOPED_TRACE("request " + std::to_string(first));
        sonivex_tool::LoudnessCurveMeter meter(test::floatSpec(2));
        test::FailingMemory memory(first, test::FailingMemory::Which::kOne);
        bool is_lost = false;
        try {
            memory.during([&] { meter.add(*loud); });
        } catch (const std::bad_alloc&) {
            is_lost = true;
        }
        EXPECT_EQ(is_lost, memory.hasFailed());
        if (!memory.hasFailed()) break;
    }
    EXPECT_GT(first, 1);
}

}  // namespace
