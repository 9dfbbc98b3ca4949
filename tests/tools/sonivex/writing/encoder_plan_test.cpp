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
        EXPECT_EQ(planEncoder({.path = "a.wav"}, {specWith(format)}).codec->id, codec);
    for (const int bits : {17, 20, 24}) {
        EXPECT_EQ(planEncoder({.path = "a.wav"}, {specWith(AV_SAMPLE_FMT_S32), bits}).codec->id,
                  AV_CODEC_ID_PCM_S24LE)
            << bits;
    }
    EXPECT_EQ(planEncoder({.path = "a.wav"}, {specWith(AV_SAMPLE_FMT_S32), 25}).codec->id,
              AV_CODEC_ID_PCM_S32LE);
}

TEST(EncoderPlan, WritesWavIfTheNameHasNoExtension) {
    EXPECT_STREQ(planEncoder({.path = "folder.d/name"}, {specWith(AV_SAMPLE_FMT_S16)}).muxer->name, "wav");
}

TEST(EncoderPlan, RefusesAFormatWhoseCodecHasNoEncoder) {
    ASSERT_EQ(avcodec_find_encoder(AV_CODEC_ID_ATRAC3), nullptr);
    try {
        planEncoder({.path = "a.oma"}, {specWith(AV_SAMPLE_FMT_S16)});
        FAIL() << "it is planned";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::OutputFormat);
        EXPECT_STREQ(failure.what(), "cannot write \"a.oma\": there is no encoder for atrac3");
    }
}

TEST(EncoderPlan, NotesThatTheRateMustChange) {
    const EncoderPlan plan = planEncoder({.path = "a.opus"}, {specWith(AV_SAMPLE_FMT_FLTP, 2, 44100)});
    EXPECT_EQ(plan.spec.rate_hz, 48000);
    EXPECT_EQ(plan.notes.size(), 1U);
    EXPECT_TRUE(planEncoder({.path = "a.opus"}, {specWith(AV_SAMPLE_FMT_FLTP)}).notes.empty());
}

TEST(EncoderPlan, UsesTheOnlyRateOfACodecEvenIfTheEncoderAcceptsAny) {
    const EncoderPlan plan = planEncoder({.path = "a.g722"}, {specWith(AV_SAMPLE_FMT_S16, 1, 44100)});
    EXPECT_EQ(plan.spec.rate_hz, 16000);
    EXPECT_EQ(plan.notes.size(), 1U);
    EXPECT_TRUE(planEncoder({.path = "a.g722"}, {specWith(AV_SAMPLE_FMT_S16, 1, 16000)}).notes.empty());
}

TEST(EncoderPlan, RefusesFormatsThatStoreNeitherRateNorChannels) {
    for (const char* name : {"a.sw", "a.uw", "a.sb", "a.ub", "a.al", "a.ul", "a.aptx", "a.dfpwm"}) {
        try {
            planEncoder({.path = name}, {specWith(AV_SAMPLE_FMT_S16)});
            ADD_FAILURE() << name << " was accepted";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitCode::OutputFormat) << name;
        }
    }
}

TEST(EncoderPlan, RefusesUnknownFormatsAndUnsupportedChannelCounts) {
    const auto refusal = [](const std::string& name, int channels) {
        try {
            planEncoder({.path = name}, {specWith(AV_SAMPLE_FMT_S16, channels)});
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

TEST(EncoderPlan, KeepsLosslessSoundLosslessInMatroskaAndMov) {
    const AudioSpec spec = specWith(AV_SAMPLE_FMT_S32);
    EXPECT_EQ(planEncoder({.path = "a.mkv"}, {spec, 24, true}).codec->id, AV_CODEC_ID_FLAC);
    EXPECT_EQ(planEncoder({.path = "a.mka"}, {spec, 24, true}).codec->id, AV_CODEC_ID_FLAC);
    EXPECT_EQ(planEncoder({.path = "a.mov"}, {spec, 24, true}).codec->id, AV_CODEC_ID_PCM_S24LE);
    EXPECT_EQ(planEncoder({.path = "a.mkv"}, {spec, 24, false}).codec->id, AV_CODEC_ID_OPUS);
    EXPECT_EQ(planEncoder({.path = "a.mp4"}, {spec, 24, true}).codec->id, AV_CODEC_ID_AAC);
}

TEST(EncoderPlan, KeepsARateThatOpusLacksInMatroskaButNotInWebm) {
    const AudioSpec spec = specWith(AV_SAMPLE_FMT_FLTP, 2, 44100);
    const EncoderPlan matroska = planEncoder({.path = "a.mkv"}, {spec});
    EXPECT_EQ(matroska.codec->id, AV_CODEC_ID_AAC);
    EXPECT_EQ(matroska.spec.rate_hz, 44100);
    const EncoderPlan webm = planEncoder({.path = "a.webm"}, {spec});
    EXPECT_EQ(webm.codec->id, AV_CODEC_ID_OPUS);
    EXPECT_EQ(webm.spec.rate_hz, 48000);
    EXPECT_EQ(webm.notes.size(), 1U);
}

TEST(EncoderPlan, AviTakesTheCodecThatHasTheChannels) {
    const auto codec = [](int channels) {
        return planEncoder({.path = "a.avi"}, {specWith(AV_SAMPLE_FMT_S16, channels)}).codec->id;
    };
    EXPECT_EQ(codec(1), AV_CODEC_ID_MP3);
    EXPECT_EQ(codec(2), AV_CODEC_ID_MP3);
    EXPECT_EQ(codec(6), AV_CODEC_ID_AC3);
    EXPECT_EQ(codec(8), AV_CODEC_ID_PCM_S16LE);
}

TEST(EncoderPlan, KnowsWhichCodecsAreLossless) {
    EXPECT_TRUE(isLossless(AV_CODEC_ID_FLAC, FF_PROFILE_UNKNOWN));
    EXPECT_TRUE(isLossless(AV_CODEC_ID_PCM_S16LE, FF_PROFILE_UNKNOWN));
    EXPECT_TRUE(isLossless(AV_CODEC_ID_TRUEHD, FF_PROFILE_UNKNOWN));
    EXPECT_FALSE(isLossless(AV_CODEC_ID_AAC, FF_PROFILE_AAC_LOW));
    EXPECT_FALSE(isLossless(AV_CODEC_ID_DTS, FF_PROFILE_DTS));
    EXPECT_TRUE(isLossless(AV_CODEC_ID_DTS, FF_PROFILE_DTS_HD_MA));
}

TEST(EncoderPlan, RefusesAnAbsurdBitRate) {
    for (const int64_t rate : {int64_t{-1}, int64_t{0}, int64_t{499}, int64_t{9'000'000'000}}) {
        const OutputSettings settings{.path = "a.mp3", .bit_rate = rate};
        EXPECT_THROW(planEncoder(settings, {specWith(AV_SAMPLE_FMT_S16)}), Failure) << rate;
    }
}

TEST(EncoderPlan, SetsABitRateForLossyEncodersOnly) {
    EXPECT_EQ(planEncoder({.path = "a.flac"}, {specWith(AV_SAMPLE_FMT_S16)}).bit_rate, 0);
    EXPECT_EQ(planEncoder({.path = "a.wav"}, {specWith(AV_SAMPLE_FMT_S16)}).bit_rate, 0);
    EXPECT_EQ(planEncoder({.path = "a.mp3"}, {specWith(AV_SAMPLE_FMT_S16)}).bit_rate, 192'000);
    EXPECT_EQ(planEncoder({.path = "a.m4a"}, {specWith(AV_SAMPLE_FMT_S16, 6)}).bit_rate, 576'000);
    EXPECT_EQ(planEncoder({.path = "a.mp3"}, {specWith(AV_SAMPLE_FMT_S16, 2, 16000)}).bit_rate, 96'000);
}

}  // namespace
