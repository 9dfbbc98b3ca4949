#include "reframer.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::AudioSpec;
using sonivex_tool::defaultLayout;
using sonivex_tool::FramePtr;
using sonivex_tool::Reframer;

TEST(Reframer, ReturnsTheSameSamplesInTheRequestedLengths) {
    Reframer reframer(test::floatSpec(1));
    int given = 0;
    for (const int length : {1, 700, 3, 1300, 44}) {
        reframer.append(*test::countingFrame(given, length));
        given += length;
    }
    ASSERT_EQ(reframer.size(), given);
    std::vector<float> out;
    for (const int length : {512, 512, 1000, 24}) {
        const FramePtr frame = reframer.take(length);
        ASSERT_EQ(frame->nb_samples, length);
        const auto samples = test::floatsOf(*frame);
        out.insert(out.end(), samples.begin(), samples.end());
    }
    std::vector<float> expected(static_cast<size_t>(given));
    std::iota(expected.begin(), expected.end(), 0.0F);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(reframer.size(), 0);
}

TEST(Reframer, AppendsSilenceAtMidScaleInEveryFormat) {
    AudioSpec spec;
    spec.rate_hz = 48000;
    spec.layout = defaultLayout(2);
    for (const AVSampleFormat format :
         {AV_SAMPLE_FMT_U8, AV_SAMPLE_FMT_U8P, AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP}) {
        spec.format = format;
        Reframer reframer(spec);
        reframer.appendSilence(10);
        const FramePtr frame = reframer.take(10);
        const bool is_u8 = format == AV_SAMPLE_FMT_U8 || format == AV_SAMPLE_FMT_U8P;
        for (int i = 0; i < 10; ++i) EXPECT_EQ(frame->extended_data[0][i], is_u8 ? 0x80 : 0) << format;
    }
}

}  // namespace
