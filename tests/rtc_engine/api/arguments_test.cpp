// Wrong arguments of the common interface: a status, nothing accessed, nothing printed.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "common_effects.h"
#include "sonivex/version.h"

namespace {

SonivexEffect* const kUntouched = reinterpret_cast<SonivexEffect*>(1);

// Creates an effect that must be refused. Returns the status.
template <typename Create>
int refused(Create create) {
    SonivexEffect* effect = kUntouched;
    testing::internal::CaptureStdout();
    const int status = create(&effect);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(effect, nullptr);
    return status;
}

int surroundStatus(int channels, int rate_hz, int type, int mode, int limiter) {
    return refused([=](SonivexEffect** effect) {
        return sonivex_create_surround(effect, channels, rate_hz, type, mode, limiter);
    });
}

TEST(CreateSurround, RefusesWhatItDoesNotSupportWithoutALogLine) {
    for (const int channels : {INT_MIN, -1, 0, 1, 3, 4, 5, 7, 9, INT_MAX}) {
        EXPECT_EQ(surroundStatus(channels, 48000, 1, 1, 1), SONIVEX_ERROR_UNSUPPORTED) << channels;
        EXPECT_EQ(surroundStatus(channels, 48000, 13, 1, 1), SONIVEX_ERROR_UNSUPPORTED) << channels;
    }
    for (const int rate_hz : {INT_MIN, 0, 8000, 32000, 44099, 48001, 96000, INT_MAX}) {
        EXPECT_EQ(surroundStatus(2, rate_hz, 1, 1, 1), SONIVEX_ERROR_UNSUPPORTED) << rate_hz;
    }
    for (const int type : {INT_MIN, 0, 2, 6, 7, 12, 14, INT_MAX}) {
        EXPECT_EQ(surroundStatus(2, 48000, type, 1, 1), SONIVEX_ERROR_UNSUPPORTED) << type;
    }
    for (const int mode : {INT_MIN, 0, 4, INT_MAX}) {
        EXPECT_EQ(surroundStatus(2, 48000, 13, mode, 1), SONIVEX_ERROR_ARGUMENT) << mode;
    }
    for (const int limiter : {INT_MIN, -1, 2, INT_MAX}) {
        EXPECT_EQ(surroundStatus(2, 48000, 1, 1, limiter), SONIVEX_ERROR_ARGUMENT) << limiter;
    }
}

TEST(CreateDialogue, RefusesRatesAndLevelsOutOfRange) {
    const auto status = [](int rate_hz, double level) {
        return refused(
            [=](SonivexEffect** effect) { return sonivex_create_dialogue(effect, rate_hz, level); });
    };
    for (const int rate_hz : {INT_MIN, 0, 7999, 192001, INT_MAX}) {
        EXPECT_EQ(status(rate_hz, 1.0), SONIVEX_ERROR_UNSUPPORTED) << rate_hz;
    }
    for (const double level :
         {-0.001, 100.001, static_cast<double>(NAN), static_cast<double>(INFINITY), 1e300}) {
        EXPECT_EQ(status(48000, level), SONIVEX_ERROR_ARGUMENT) << level;
    }
}

TEST(CreateNormalizer, RefusesChannelsAndRatesOutOfRange) {
    const auto status = [](int channels, int rate_hz) {
        return refused(
            [=](SonivexEffect** effect) { return sonivex_create_normalizer(effect, channels, rate_hz); });
    };
    for (const int channels : {INT_MIN, 0, 9, INT_MAX}) {
        EXPECT_EQ(status(channels, 48000), SONIVEX_ERROR_UNSUPPORTED) << channels;
    }
    for (const int rate_hz : {INT_MIN, 0, 7999, 192001, INT_MAX}) {
        EXPECT_EQ(status(2, rate_hz), SONIVEX_ERROR_UNSUPPORTED) << rate_hz;
    }
}

TEST(CreateEffect, PrintsNothing) {
    testing::internal::CaptureStdout();
    for (const test::CommonEffect& kind : test::commonEffects()) kind.make();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(CreateEffect, RefusesANullPointer) {
    EXPECT_EQ(sonivex_create_surround(nullptr, 2, 48000, 1, 1, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_create_dialogue(nullptr, 48000, 1.0), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_create_dialogue(nullptr, 48000, -1.0), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_create_normalizer(nullptr, 2, 48000), SONIVEX_ERROR_ARGUMENT);
}

TEST(EffectQueries, TellTheEffectsProperties) {
    for (const test::CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto effect = kind.make();
        EXPECT_EQ(sonivex_input_channels(effect.get()), kind.channels_in);
        EXPECT_EQ(sonivex_output_channels(effect.get()), kind.channels_out);
        EXPECT_EQ(sonivex_block_frames(effect.get()), kind.block_frames);
    }
    EXPECT_EQ(sonivex_tail_frames(test::makeSurround(2).get()), 13000);
    EXPECT_EQ(sonivex_tail_frames(test::makeSurround(6).get()), 8544);
    EXPECT_EQ(sonivex_tail_frames(test::makeSurround(8).get()), 8640);
    EXPECT_EQ(sonivex_tail_frames(test::makeSurround(2, 13).get()), 12999);
    EXPECT_EQ(sonivex_tail_frames(test::makeDialogue().get()), 0);
    EXPECT_EQ(sonivex_tail_frames(test::makeNormalizer(2).get()), 0);
}

TEST(EffectQueries, OfNullAreZeroOrAnError) {
    EXPECT_EQ(sonivex_input_channels(nullptr), 0);
    EXPECT_EQ(sonivex_output_channels(nullptr), 0);
    EXPECT_EQ(sonivex_block_frames(nullptr), 0);
    EXPECT_EQ(sonivex_stream_latency_frames(nullptr), 0);
    EXPECT_EQ(sonivex_tail_frames(nullptr), 0);
    EXPECT_EQ(sonivex_latency_frames(nullptr, 512), SONIVEX_ERROR_ARGUMENT);
    const auto effect = test::makeNormalizer(2);
    for (const int frames : {INT_MIN, -1, 0, SONIVEX_MAX_CALL_FRAMES + 1, INT_MAX}) {
        EXPECT_EQ(sonivex_latency_frames(effect.get(), frames), SONIVEX_ERROR_ARGUMENT) << frames;
    }
    sonivex_release(nullptr);
}

TEST(SetVoiceLevel, IsForDialogueEnhancementAlone) {
    EXPECT_EQ(sonivex_set_voice_level(nullptr, 1.0), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_set_voice_level(test::makeSurround(2).get(), 1.0), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_set_voice_level(test::makeNormalizer(2).get(), 1.0), SONIVEX_ERROR_ARGUMENT);
    const auto dialogue = test::makeDialogue();
    for (const double level : {-0.1, 100.1, static_cast<double>(NAN)}) {
        EXPECT_EQ(sonivex_set_voice_level(dialogue.get(), level), SONIVEX_ERROR_ARGUMENT) << level;
    }
    EXPECT_EQ(sonivex_set_voice_level(dialogue.get(), 0.0), SONIVEX_OK);
    EXPECT_EQ(sonivex_set_voice_level(dialogue.get(), 100.0), SONIVEX_OK);
}

TEST(EffectCalls, TakeTheLongestCall) {
    constexpr int kLongest = SONIVEX_MAX_CALL_FRAMES;
    const auto effect = test::makeNormalizer(1);
    const test::Pcm in(kLongest, 1000);
    test::Pcm out(kLongest);
    const std::vector<float> in_floats(kLongest, 0.5F);
    std::vector<float> out_floats(kLongest);
    const float* in_plane = in_floats.data();
    float* out_plane = out_floats.data();
    EXPECT_EQ(sonivex_process_int16(effect.get(), in.data(), out.data(), kLongest), SONIVEX_OK);
    EXPECT_EQ(sonivex_process_float(effect.get(), in_plane, out_plane, kLongest), SONIVEX_OK);
    EXPECT_EQ(sonivex_stream_float(effect.get(), &in_plane, &out_plane, kLongest), SONIVEX_OK);
    EXPECT_GE(sonivex_latency_frames(effect.get(), kLongest), 0);
}

TEST(EffectCalls, RefuseWrongArgumentsAndTouchNothing) {
    const auto effect = test::makeNormalizer(2);
    const test::Pcm in(2, 1000);
    test::Pcm out(2, 7);
    const float in_floats[2] = {0.5F, 0.5F};
    float out_floats[2] = {7.0F, 7.0F};
    const float* in_planes[] = {in_floats, in_floats + 1};
    float* out_planes[] = {out_floats, out_floats + 1};
    for (const int frames : {INT_MIN, -1, SONIVEX_MAX_CALL_FRAMES + 1, INT_MAX}) {
        EXPECT_EQ(sonivex_process_int16(effect.get(), in.data(), out.data(), frames), SONIVEX_ERROR_ARGUMENT);
        EXPECT_EQ(sonivex_process_float(effect.get(), in_floats, out_floats, frames), SONIVEX_ERROR_ARGUMENT);
        EXPECT_EQ(sonivex_stream_float(effect.get(), in_planes, out_planes, frames), SONIVEX_ERROR_ARGUMENT);
    }
    EXPECT_EQ(sonivex_process_int16(nullptr, in.data(), out.data(), 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_process_int16(effect.get(), nullptr, out.data(), 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_process_int16(effect.get(), in.data(), nullptr, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_process_float(nullptr, in_floats, out_floats, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_process_float(effect.get(), nullptr, out_floats, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_process_float(effect.get(), in_floats, nullptr, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_stream_float(nullptr, in_planes, out_planes, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_stream_float(effect.get(), nullptr, out_planes, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(sonivex_stream_float(effect.get(), in_planes, nullptr, 1), SONIVEX_ERROR_ARGUMENT);
    in_planes[1] = nullptr;
    EXPECT_EQ(sonivex_stream_float(effect.get(), in_planes, out_planes, 1), SONIVEX_ERROR_ARGUMENT);
    in_planes[1] = in_floats;
    out_planes[1] = nullptr;
    EXPECT_EQ(sonivex_stream_float(effect.get(), in_planes, out_planes, 1), SONIVEX_ERROR_ARGUMENT);
    EXPECT_EQ(out, test::Pcm(2, 7));
    EXPECT_EQ(out_floats[0], 7.0F);
    EXPECT_EQ(out_floats[1], 7.0F);
    // Nothing got into the effect: its output starts like that of a new one.
    const test::Pcm sound = test::noise(1, 2 * 512, 1000);
    EXPECT_EQ(test::processed(effect.get(), sound, {512}),
              test::processed(test::makeNormalizer(2).get(), sound, {512}));
}

TEST(EffectCalls, OfNoFramesNeedNoBuffers) {
    const auto effect = test::makeSurround(2);
    EXPECT_EQ(sonivex_process_int16(effect.get(), nullptr, nullptr, 0), SONIVEX_OK);
    EXPECT_EQ(sonivex_process_float(effect.get(), nullptr, nullptr, 0), SONIVEX_OK);
    EXPECT_EQ(sonivex_stream_float(effect.get(), nullptr, nullptr, 0), SONIVEX_OK);
}

TEST(StatusText, DescribesEveryStatusDifferently) {
    std::set<std::string> texts;
    for (int status = SONIVEX_OK; status >= SONIVEX_ERROR_GAPS - 1; --status) {
        texts.insert(sonivex_status_text(status));
    }
    EXPECT_EQ(texts.size(), 7U);
    EXPECT_STREQ(sonivex_status_text(SONIVEX_ERROR_MEMORY), "memory ran out");
    EXPECT_STREQ(sonivex_status_text(SONIVEX_ERROR_GAPS - 1), "unknown status");
    EXPECT_STREQ(sonivex_status_text(512), sonivex_status_text(SONIVEX_OK));
    EXPECT_STREQ(sonivex_status_text(INT_MIN), "unknown status");
}

TEST(LibraryVersion, IsThatOfTheHeadersAndOfTheProject) {
    const std::string of_headers = std::to_string(SONIVEX_VERSION_MAJOR) + "." +
                                   std::to_string(SONIVEX_VERSION_MINOR) + "." +
                                   std::to_string(SONIVEX_VERSION_PATCH);
    EXPECT_EQ(sonivex_version(), of_headers);
    EXPECT_EQ(of_headers, SONIVEX_PROJECT_VERSION);
}

TEST(HasEffect, IsTrueForTheThreeEffectsAndFalseOtherwise) {
    EXPECT_EQ(sonivex_has_effect(SONIVEX_SURROUND), 1);
    EXPECT_EQ(sonivex_has_effect(SONIVEX_DIALOGUE), 1);
    EXPECT_EQ(sonivex_has_effect(SONIVEX_NORMALIZER), 1);
    for (const int kind : {INT_MIN, -1, 0, 4, INT_MAX}) EXPECT_EQ(sonivex_has_effect(kind), 0) << kind;
}

}  // namespace
