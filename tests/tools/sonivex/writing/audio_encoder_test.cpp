#include "audio_encoder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "failure.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;

EncoderPlan planFor(const char* encoder) {
    EncoderPlan plan;
    plan.codec = avcodec_find_encoder_by_name(encoder);
    plan.spec = test::floatSpec(2);
    plan.spec.format = AV_SAMPLE_FMT_FLTP;
    plan.bit_rate = 128'000;
    return plan;
}

TEST(AudioEncoder, OpensAnEncoderThatIsCalledExperimental) {
    const EncoderPlan plan = planFor("vorbis");
    if (plan.codec == nullptr || (plan.codec->capabilities & AV_CODEC_CAP_EXPERIMENTAL) == 0)
        GTEST_SKIP() << "this FFmpeg has no experimental encoder of Vorbis";
    int packets = 0;
    AudioEncoder encoder(plan, false, [&packets](AVPacket&) { ++packets; });
    const FramePtr frame = makeFrame(plan.spec, 48000);
    av_samples_set_silence(frame->extended_data, 0, 48000, plan.spec.channels(), plan.spec.format);
    encoder.write(*frame);
    encoder.finish();
    EXPECT_GT(packets, 0);
}

TEST(AudioEncoder, FailsOnSamplesThatTheEncoderRefuses) {
    const EncoderPlan plan = planFor("aac");
    ASSERT_NE(plan.codec, nullptr);
    AudioEncoder encoder(plan, false, [](AVPacket&) {});
    const FramePtr frame = makeFrame(plan.spec, 4096);
    av_samples_set_silence(frame->extended_data, 0, 4096, plan.spec.channels(), plan.spec.format);
    for (int i = 0; i < frame->nb_samples; ++i)
        reinterpret_cast<float*>(frame->data[0])[i] = std::numeric_limits<float>::quiet_NaN();
    try {
        encoder.write(*frame);
        encoder.finish();
        FAIL() << "it encodes what is no number";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::OutputNotWritable);
        EXPECT_EQ(std::string(failure.what()).rfind("cannot encode the output: ", 0), 0U) << failure.what();
    }
}

}  // namespace
