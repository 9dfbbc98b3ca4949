// Makes the conversion libraries run out of memory at every point of a frame's path. The frame is then lost
// or comes out complete, as 16-bit or in the player's format. The frames after it are correct without a
// flush.
#include <gtest/gtest.h>

#include "failing_calls/failing_memory.h"
#include "filter/faults/engine_faults.h"
#include "filter/faults/filter_under_test.h"
#include "frame_checks.h"
#include "support/effects/normalizer_effect.h"
#include "support/frames/frame_matchers.h"

namespace test {
namespace {

using Vorlin::IQFFrame;
using Which = FailingMemory::Which;

constexpr int64_t kPts = 4711;
constexpr int kMaxRequests = 10'000;  // a frame makes a few hundred

class FilterOutOfMemory : public ::testing::TestWithParam<FrameSpec> {
  protected:
    struct Passed {
        std::vector<int16_t> samples;  // of the input
        std::unique_ptr<IQFFrame> out;
        bool was_processed = false;  // true even if the result was lost
    };

    static std::unique_ptr<IQFFrame> frameOf(int number, int frames) {
        FrameSpec spec = GetParam();
        spec.frames = frames;
        auto frame = makeFrame(spec, noiseSource(static_cast<uint32_t>(number), 3000));
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
        ASSERT_TRUE(frameMatchesDescription(info, out)) << "every plane must lie inside a buffer";
        EXPECT_TRUE(out->format == GetParam().format || out->format == AV_SAMPLE_FMT_S16) << out->format;
        EXPECT_EQ(out->ch_layout.nb_channels, GetParam().channels);
        EXPECT_EQ(out->pts, kPts);
        ASSERT_TRUE(holdsSamples(out, expected));
    }

    // Plays one stream whose frame number `hit` meets the failing requests.
    // @return true if that frame made at least `first` requests.
    static bool streamSurvives(int hit, int first, Which which) {
        constexpr int kFramesAfter = 2;
        FilterUnderTest filter;
        filter.startNormalizer();
        NormalizerEffect engine(GetParam().channels);
        bool is_reached = false;
        for (int number = 0; number <= hit + kFramesAfter; ++number) {
            // The failing frame is longer than those before it, so the buffers of the graphs are too short
            // for it. It is also longer than those after it, which would come late if any of it stayed
            // inside.
            auto frame = frameOf(number, number == hit ? 600 : 100);
            Passed passed;
            if (number == hit) {
                FailingMemory memory(first, which);
                memory.onlyOfLibavutil();
                passed = memory.during([&] { return pass(filter, std::move(frame)); });
                is_reached = memory.requests() >= first;
            } else {
                passed = pass(filter, std::move(frame));
                const int format = passed.out ? avFrameOf(passed.out)->format : AV_SAMPLE_FMT_NONE;
                EXPECT_EQ(format, GetParam().format)
                    << "only the frame with the failing request may be affected";
            }
            if (!passed.was_processed) continue;
            const auto expected = engine.process(passed.samples);
            if (passed.out) expectWhole(passed.out->getInfo(), avFrameOf(passed.out), expected);
        }
        return is_reached;
    }

    static void failEverywhere(int hit) {
        for (const Which which : {Which::kOne, Which::kAllFromThere}) {
            int first = 1;
            while (first < kMaxRequests && streamSurvives(hit, first, which)) {
                ASSERT_FALSE(HasFailure())
                    << "request " << first << (which == Which::kOne ? "" : " and all after");
                ++first;
            }
            ASSERT_FALSE(HasFailure()) << "the stream failed without a failing request";
            EXPECT_GT(first, 1) << "the frame must request memory";
            EXPECT_LT(first, kMaxRequests);
        }
    }
};

std::string nameOf(const FrameSpec& spec) {
    return std::string(av_get_sample_fmt_name(spec.format)) + "_" + std::to_string(spec.channels);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, FilterOutOfMemory,
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

TEST_P(FilterOutOfMemory, CostsAtMostTheFirstFrameOfAStream) {
    failEverywhere(0);
}

TEST_P(FilterOutOfMemory, CostsAtMostOneFrameInTheMiddleOfAStream) {
    failEverywhere(1);
}

}  // namespace
}  // namespace test
