#include "common_effects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"

namespace test {
namespace {

EffectOwner owned(int status, SonivexEffect* effect) {
    EXPECT_EQ(status, SONIVEX_OK) << sonivex_status_text(status);
    return EffectOwner(effect);
}

CommonEffect surround(int channels, int type, int mode, int limiter, int rate_hz) {
    return {.name = "surround, " + std::to_string(channels) + " channels, type " + std::to_string(type) +
                    ", mode " + std::to_string(mode) + ", limiter " + std::to_string(limiter),
            .channels_in = channels,
            .channels_out = 2,
            .block_frames = 240,
            .own_delay_frames = 0,
            .make = [=] { return makeSurround(channels, type, mode, limiter, rate_hz); },
            .by_aem_functions =
                [=](const Pcm& in, int call_frames) {
                    return SurroundEffect(channels, type, mode, limiter, rate_hz)
                        .processInCallsOf(call_frames, in);
                }};
}

CommonEffect dialogue(int rate_hz, double voice_level) {
    return {.name = "dialogue, " + std::to_string(rate_hz) + " Hz",
            .channels_in = 2,
            .channels_out = 2,
            .block_frames = hopFrames(rate_hz),
            .own_delay_frames = 3 * hopFrames(rate_hz),
            .make = [=] { return makeDialogue(rate_hz, voice_level); },
            .by_aem_functions =
                [=](const Pcm& in, int call_frames) {
                    return DialogueEffect({.rate_hz = rate_hz, .voice_level = voice_level})
                        .processInCallsOf(call_frames, in);
                }};
}

CommonEffect normalizer(int channels) {
    return {.name = "normalizer, " + std::to_string(channels) + " channels",
            .channels_in = channels,
            .channels_out = channels,
            .block_frames = 512,
            .own_delay_frames = 0,
            .make = [=] { return makeNormalizer(channels); },
            .by_aem_functions =
                [=](const Pcm& in, int call_frames) {
                    return NormalizerEffect(channels).processInCallsOf(call_frames, in);
                }};
}

}  // namespace

EffectOwner makeSurround(int channels, int type, int mode, int limiter, int rate_hz) {
    SonivexEffect* effect = nullptr;
    const int status = sonivex_create_surround(&effect, channels, rate_hz, type, mode, limiter);
    return owned(status, effect);
}

EffectOwner makeDialogue(int rate_hz, double voice_level) {
    SonivexEffect* effect = nullptr;
    const int status = sonivex_create_dialogue(&effect, rate_hz, voice_level);
    return owned(status, effect);
}

EffectOwner makeNormalizer(int channels, int rate_hz) {
    SonivexEffect* effect = nullptr;
    const int status = sonivex_create_normalizer(&effect, channels, rate_hz);
    return owned(status, effect);
}

const std::vector<CommonEffect>& commonEffects() {
    static const std::vector<CommonEffect> effects = {surround(2, 1, 1, 1, 48000),
                                                      surround(6, 1, 1, 0, 44100),
                                                      surround(8, 1, 3, 1, 48000),
                                                      surround(2, 13, 1, 1, 48000),
                                                      surround(6, 13, 2, 0, 48000),
                                                      surround(8, 13, 3, 1, 44100),
                                                      dialogue(8000, 0.5),
                                                      dialogue(48000, 2.0),
                                                      dialogue(96000, 1.0),
                                                      dialogue(192000, 1.0),
                                                      normalizer(1),
                                                      normalizer(2),
                                                      normalizer(3),
                                                      normalizer(8)};
    return effects;
}

std::vector<CommonEffect> fewCommonEffects() {
    return {surround(2, 1, 1, 1, 48000), dialogue(48000, 1.0), normalizer(2)};
}

Planes planesOf(const Pcm& samples, int channels) {
    const auto count = static_cast<std::size_t>(channels);
    Planes planes(count);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        planes[i % count].push_back(static_cast<float>(samples[i]) / 32768.0F);
    }
    return planes;
}

Pcm samplesOf(const Planes& planes) {
    Pcm samples;
    for (std::size_t i = 0; i < planes.front().size(); ++i) {
        for (const auto& plane : planes) {
            const float sample = plane[i] * 32768.0F;
            EXPECT_EQ(sample, std::nearbyint(sample));
            samples.push_back(static_cast<std::int16_t>(sample));
        }
    }
    return samples;
}

Planes streamed(SonivexEffect* effect, const Planes& in, const std::vector<int>& call_sizes) {
    Planes out(static_cast<std::size_t>(sonivex_output_channels(effect)),
               std::vector<float>(in.front().size(), -9.0F));
    std::size_t done = 0;
    for (const int frames : call_sizes) {
        std::vector<const float*> from;
        std::vector<float*> to;
        for (const auto& plane : in) from.push_back(plane.data() + done);
        for (auto& plane : out) to.push_back(plane.data() + done);
        EXPECT_EQ(sonivex_stream_float(effect, from.data(), to.data(), frames), SONIVEX_OK);
        done += static_cast<std::size_t>(frames);
    }
    EXPECT_EQ(done, in.front().size());
    return out;
}

Pcm processed(SonivexEffect* effect, const Pcm& in, const std::vector<int>& call_sizes) {
    const auto width_in = static_cast<std::size_t>(sonivex_input_channels(effect));
    const auto width_out = static_cast<std::size_t>(sonivex_output_channels(effect));
    Pcm out;
    std::size_t done = 0;
    for (const int frames : call_sizes) {
        const auto count = static_cast<std::size_t>(frames);
        Pcm call(count * width_out, -9);
        EXPECT_LE((done + count) * width_in, in.size());
        EXPECT_EQ(sonivex_process_int16(effect, in.data() + done * width_in, call.data(), frames),
                  SONIVEX_OK);
        append(out, call);
        done += count;
    }
    return out;
}

Pcm delayed(const Pcm& samples, int frames, int channels) {
    Pcm late(static_cast<std::size_t>(frames * channels), 0);
    append(late, samples);
    late.resize(samples.size());
    return late;
}

}  // namespace test
