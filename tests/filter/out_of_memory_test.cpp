// The conversion libraries run out of memory at every point of a frame's way: the frame is lost, or comes out
// whole as 16-bit or in the player's format, and the frames after it are right without a flush.
#include <gtest/gtest.h>

#include "engine_faults.h"
#include "failing_memory.h"
#include "filter_under_test.h"
#include "frame_checks.h"
#include "support/direct_normalizer.h"

namespace test {
namespace {

using Vorlin::IQFFrame;
using Which = FailingMemory::Which;

constexpr int64_t kPts = 4711;
constexpr int kMostRequests = 10'000;  // a frame makes some hundreds

class OutOfMemory : public ::testing::TestWithParam<FrameSpec> {
  protected:
    struct Passed {
        std::vector<int16_t> samples;  // what went in
        std::unique_ptr<IQFFrame> out;
        bool was_processed = false;  // even if the result was lost
    };

    static std::unique_ptr<IQFFrame> frameOf(int number, int frames) {
        FrameSpec spec = GetParam();
        spec.frames = frames;
        auto frame = makeFrame(spec, noise(static_cast<uint32_t>(number), 3000));
        static_cast<AVFrame*>(*frame)->pts = kPts;
        return frame;
    }

    static Passed pass(FilterUnderTest& filter, std::unique_ptr<IQFFrame> frame) {
        Passed passed;
        passed.samples = samplesOf(avFrameOf(frame));
        const std::size_t calls_before = engineFaults().channels_of_calls.size();
        passed.out = filter.pass(std::move(frame));
        passed.was_processed = engineFaults().channels_of_calls.size() > calls_before;
        return passed;
    }

    static void expectWhole(const IQFFrame::audioInfo& info, const AVFrame* out,
                            const std::vector<int16_t>& expected) {
        ASSERT_TRUE(frameMatchesDescription(info, out)) << "every plane lies in a buffer that holds it";
        EXPECT_TRUE(out->format == GetParam().format || out->format == AV_SAMPLE_FMT_S16) << out->format;
        EXPECT_EQ(out->ch_layout.nb_channels, GetParam().channels);
        EXPECT_EQ(out->pts, kPts);
        ASSERT_EQ(samplesOf(out), expected);
    }

    // One stream whose frame number `hit` meets the failing requests. @return whether there were so many
    // requests.
    static bool streamSurvives(int hit, int first, Which which) {
        constexpr int kFramesAfter = 2;
        FilterUnderTest filter;
        filter.startNormalizer();
        DirectNormalizer engine(GetParam().channels);
        bool is_reached = false;
        for (int number = 0; number <= hit + kFramesAfter; ++number) {
            // The hit is longer than the frames before it, for which the graphs have buffers already, and
            // than those after it, which it would make late if any of it stayed behind.
            auto frame = frameOf(number, number == hit ? 600 : 100);
            Passed passed;
            if (number == hit) {
                const FailingMemory memory(first, which);
                passed = pass(filter, std::move(frame));
                is_reached = memory.requests() >= first;
            } else {
                passed = pass(filter, std::move(frame));
                const int format = passed.out ? avFrameOf(passed.out)->format : AV_SAMPLE_FMT_NONE;
                EXPECT_EQ(format, GetParam().format) << "only the frame that met the failure may suffer";
            }
            if (!passed.was_processed) continue;
            const auto expected = engine.process(passed.samples);
            if (passed.out) expectWhole(passed.out->getInfo(), avFrameOf(passed.out), expected);
        }
        return is_reached;
    }

    static void failEverywhere(int hit) {
        for (const Which which : {Which::One, Which::AllFromThere}) {
            int first = 1;
            while (first < kMostRequests && streamSurvives(hit, first, which)) {
                ASSERT_FALSE(HasFailure())
                    << "request " << first << (which == Which::One ? "" : " and all after");
                ++first;
            }
            ASSERT_FALSE(HasFailure()) << "without a failing request";
            EXPECT_GT(first, 1) << "the frame asks for memory";
            EXPECT_LT(first, kMostRequests);
        }
    }
};

std::string nameOf(const FrameSpec& spec) {
    return std::string(av_get_sample_fmt_name(spec.format)) + "_" + std::to_string(spec.channels);
}

INSTANTIATE_TEST_SUITE_P(
    Filter, OutOfMemory,
    ::testing::Values(
        FrameSpec{
            .format = AV_SAMPLE_FMT_S16,
        },
        FrameSpec{
            .format = AV_SAMPLE_FMT_S32,
        },
        FrameSpec{
            .format = AV_SAMPLE_FMT_FLT,
        },
        FrameSpec{
            .format = AV_SAMPLE_FMT_FLTP,
        },
        FrameSpec{.format = AV_SAMPLE_FMT_FLTP, .channels = 6, .frames = 512, .layout = "5.1(side)"}),
    [](const auto& parameter) { return nameOf(parameter.param); });

TEST_P(OutOfMemory, CostsAtMostTheFirstFrameOfAStream) {
    failEverywhere(0);
}

TEST_P(OutOfMemory, CostsAtMostOneFrameInTheMiddleOfAStream) {
    failEverywhere(1);
}

}  // namespace
}  // namespace test
