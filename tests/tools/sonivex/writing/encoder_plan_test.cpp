#include "encoder_plan.h"

#include <gtest/gtest.h>

#include "failure.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;

AudioSpec specWith(AVSampleFormat format, int channels = 2, int rate_hz = 48000) {
    AudioSpec spec = test::floatSpec(channels, rate_hz);
    spec.format = format;
    return spec;
}

TEST(EncoderPlan, ChoosesTheSmallestSampleFormatThatLosesNothing) {
    const std::vector<AVSampleFormat> integers = {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S32};
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_U8P, integers), AV_SAMPLE_FMT_S16);
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_S16P, integers), AV_SAMPLE_FMT_S16);
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_S32P, integers), AV_SAMPLE_FMT_S32);
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_FLTP, integers), AV_SAMPLE_FMT_S32);
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_S64, integers), AV_SAMPLE_FMT_S32);
    const std::vector<AVSampleFormat> many = {AV_SAMPLE_FMT_S32P, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP,
                                              AV_SAMPLE_FMT_S16P};
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_FLTP, many), AV_SAMPLE_FMT_FLTP);
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_S16, many), AV_SAMPLE_FMT_S16P);
    EXPECT_EQ(nearestSampleFormat(AV_SAMPLE_FMT_S16, {}), AV_SAMPLE_FMT_S16);
}

TEST(EncoderPlan, ChoosesTheNextHigherRateOrElseTheHighest) {
    EXPECT_EQ(nearestRateHz(44100, {48000, 24000, 16000}), 48000);
    EXPECT_EQ(nearestRateHz(16000, {48000, 24000, 16000}), 16000);
    EXPECT_EQ(nearestRateHz(96000, {8000, 48000, 44100}), 48000);
    EXPECT_EQ(nearestRateHz(12345, {}), 12345);
}

TEST(EncoderPlan, WavKeepsTheSampleFormatOfTheInput) {
    const std::vector<std::pair<AVSampleFormat, AVCodecID>> pairs = {
        {AV_SAMPLE_FMT_U8, AV_CODEC_ID_PCM_U8},     {AV_SAMPLE_FMT_U8P, AV_CODEC_ID_PCM_U8},
        {AV_SAMPLE_FMT_S16, AV_CODEC_ID_PCM_S16LE}, {AV_SAMPLE_FMT_S16P, AV_CODEC_ID_PCM_S16LE},
        {AV_SAMPLE_FMT_S32, AV_CODEC_ID_PCM_S32LE}, {AV_SAMPLE_FMT_FLTP, AV_CODEC_ID_PCM_F32LE},
        {AV_SAMPLE_FMT_DBL, AV_CODEC_ID_PCM_F64LE}, {AV_SAMPLE_FMT_S64P, AV_CODEC_ID_PCM_S64LE}};
    for (const auto& [format, codec] : pairs)
        EXPECT_EQ(planEncoder({.path = "a.wav"}, specWith(format), 0).codec->id, codec);
    EXPECT_EQ(planEncoder({.path = "a.wav"}, specWith(AV_SAMPLE_FMT_S32), 24).codec->id,
              AV_CODEC_ID_PCM_S24LE);
}

TEST(EncoderPlan, WritesWavIfTheNameHasNoExtension) {
    EXPECT_STREQ(planEncoder({.path = "folder.d/name"}, specWith(AV_SAMPLE_FMT_S16), 0).muxer->name, "wav");
}

TEST(EncoderPlan, NotesThatTheRateMustChange) {
    const EncoderPlan plan = planEncoder({.path = "a.opus"}, specWith(AV_SAMPLE_FMT_FLTP, 2, 44100), 0);
    EXPECT_EQ(plan.spec.rate_hz, 48000);
    EXPECT_EQ(plan.notes.size(), 1U);
    EXPECT_TRUE(planEncoder({.path = "a.opus"}, specWith(AV_SAMPLE_FMT_FLTP), 0).notes.empty());
}

TEST(EncoderPlan, UsesTheOnlyRateOfACodecEvenIfTheEncoderAcceptsAny) {
    const EncoderPlan plan = planEncoder({.path = "a.g722"}, specWith(AV_SAMPLE_FMT_S16, 1, 44100), 0);
    EXPECT_EQ(plan.spec.rate_hz, 16000);
    EXPECT_EQ(plan.notes.size(), 1U);
    EXPECT_TRUE(planEncoder({.path = "a.g722"}, specWith(AV_SAMPLE_FMT_S16, 1, 16000), 0).notes.empty());
}

TEST(EncoderPlan, RefusesFormatsThatStoreNeitherRateNorChannels) {
    for (const char* name : {"a.sw", "a.uw", "a.sb", "a.ub", "a.al", "a.ul", "a.aptx", "a.dfpwm"}) {
        try {
            planEncoder({.path = name}, specWith(AV_SAMPLE_FMT_S16), 0);
            ADD_FAILURE() << name << " was accepted";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitCode::OutputFormat) << name;
        }
    }
}

TEST(EncoderPlan, RefusesUnknownFormatsAndUnsupportedChannelCounts) {
    const auto refusal = [](const std::string& name, int channels) {
        try {
            planEncoder({.path = name}, specWith(AV_SAMPLE_FMT_S16, channels), 0);
        } catch (const Failure& failure) {
            return failure.exitCode();
        }
        return ExitCode::Success;
    };
    EXPECT_EQ(refusal("a.nosuchformat", 2), ExitCode::OutputFormat);
    EXPECT_EQ(refusal("a.png", 2), ExitCode::OutputFormat);
    EXPECT_EQ(refusal("a.mp3", 6), ExitCode::OutputFormat);
    EXPECT_EQ(refusal("a.mp3", 2), ExitCode::Success);
}

TEST(EncoderPlan, SetsABitRateForLossyEncodersOnly) {
    EXPECT_EQ(planEncoder({.path = "a.flac"}, specWith(AV_SAMPLE_FMT_S16), 0).bit_rate, 0);
    EXPECT_EQ(planEncoder({.path = "a.wav"}, specWith(AV_SAMPLE_FMT_S16), 0).bit_rate, 0);
    EXPECT_EQ(planEncoder({.path = "a.mp3"}, specWith(AV_SAMPLE_FMT_S16), 0).bit_rate, 192'000);
    EXPECT_EQ(planEncoder({.path = "a.m4a"}, specWith(AV_SAMPLE_FMT_S16, 6), 0).bit_rate, 576'000);
    EXPECT_EQ(planEncoder({.path = "a.mp3"}, specWith(AV_SAMPLE_FMT_S16, 2, 16000), 0).bit_rate, 96'000);
}

}  // namespace
