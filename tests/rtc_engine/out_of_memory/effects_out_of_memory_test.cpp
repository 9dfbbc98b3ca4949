// Makes every request for memory fail that an effect makes in its life, those of libavutil included, for
// every type and mode. Creation then returns null and keeps nothing. A block without memory is silent.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "failing_calls/sweep.h"
#include "sonivex/sonivex.h"
#include "support/signals/signals.h"

namespace test {
namespace {

constexpr int kCall_frames = 960;
constexpr int kCalls = 4;

/** An effect's own C functions with the arguments of one setting. */
struct Functions {
    std::string name;
    int channels_in;
    int channels_out;
    void* (*create)(const Functions& setting);
    int (*process)(void* handle, const short* in, short* out, const Functions& setting);
    void (*release)(void* handle);
    int type = 1;
    int mode = 1;
    int limiter = 1;
    int rate_hz = 48000;
};

Functions surround(int channels, int type, int mode, int limiter) {
    return {.name = "surround, " + std::to_string(channels) + " channels, type " + std::to_string(type) +
                    ", mode " + std::to_string(mode) + ", limiter " + std::to_string(limiter),
            .channels_in = channels < 2 ? 2 : channels,
            .channels_out = 2,
            .create =
                [](const Functions& f) {
                    return aem_CreateSurround(f.channels_in, f.rate_hz, f.type, f.mode, f.limiter);
                },
            .process = [](void* handle, const short* in, short* out,
                          const Functions&) { return aem_ProcessSurround(handle, in, out, kCall_frames); },
            .release = aem_ReleaseSurround,
            .type = type,
            .mode = mode,
            .limiter = limiter};
}

Functions dialogue(int rate_hz) {
    return {
        .name = "dialogue enhancement, " + std::to_string(rate_hz) + " Hz",
        .channels_in = 2,
        .channels_out = 2,
        .create = [](const Functions& f) { return aem_CreateDialoguEnhance(2, f.rate_hz, 1.0, 1.0, 2.0); },
        .process =
            [](void* handle, const short* in, short* out, const Functions& f) {
                return aem_ProcessDialoguEnhance(handle, in, out, kCall_frames, f.rate_hz);
            },
        .release = aem_ReleaseDialoguEnhance,
        .rate_hz = rate_hz};
}

Functions normalizer(int channels) {
    return {.name = "normalizer, " + std::to_string(channels) + " channels",
            .channels_in = channels,
            .channels_out = channels,
            .create = [](const Functions& f) { return aem_CreateNormalizer(f.channels_in, f.rate_hz); },
            .process =
                [](void* handle, const short* in, short* out, const Functions& f) {
                    return aem_ProcessNormalizer(handle, in, out, kCall_frames, f.channels_in);
                },
            .release = aem_ReleaseNormalizer};
}

std::vector<Functions> everySetting() {
    std::vector<Functions> settings;
    for (const int channels : {2, 6, 8}) {
        settings.push_back(surround(channels, 1, 1, channels == 2 ? 0 : 1));
        for (const int mode : {1, 2, 3}) settings.push_back(surround(channels, 13, mode, mode == 2 ? 0 : 1));
    }
    for (const int rate_hz : {16000, 44100, 48000, 96000, 192000}) settings.push_back(dialogue(rate_hz));
    for (const int channels : {1, 2, 6, 8}) settings.push_back(normalizer(channels));
    return settings;
}

Pcm inputOf(int channels) {
    return noise(5, channels * kCall_frames * kCalls, 9000);
}

Pcm roomForOutput(const Functions& setting) {
    return Pcm(static_cast<std::size_t>(setting.channels_out) * kCall_frames * kCalls, 77);
}

// Leads a handle from its creation to its release, and fills `out`. @return false if it was not made.
bool render(const Functions& setting, const Pcm& in, Pcm& out) {
    void* const handle = setting.create(setting);
    if (handle == nullptr) return false;
    const std::size_t samples_in = in.size() / kCalls;
    const std::size_t samples_out = out.size() / kCalls;
    for (std::size_t call = 0; call < kCalls; ++call) {
        const int result =
            setting.process(handle, in.data() + call * samples_in, out.data() + call * samples_out, setting);
        EXPECT_EQ(result, static_cast<int>(samples_out));
    }
    setting.release(handle);
    return true;
}

// Returns whether every sample is the expected one or silent. After a silent block the limiter recovers
// differently, by up to 0.11 dB.
bool isExpectedOrSilent(const Pcm& out, const Pcm& expected) {
    constexpr int kPart = 50;  // 0.17 dB
    for (std::size_t i = 0; i < out.size(); ++i) {
        const int tolerance = std::abs(expected[i]) / kPart + 1;
        if (out[i] != 0 && std::abs(out[i] - expected[i]) > tolerance) return false;
    }
    return true;
}

TEST(EffectsOutOfMemory, AreNullOrSilentForABlockAndKeepNothing) {
    int runs = 0;
    for (const Functions& setting : everySetting()) {
        SCOPED_TRACE(setting.name);
        const Pcm in = inputOf(setting.channels_in);
        Pcm unharmed = roomForOutput(setting);
        ASSERT_TRUE(render(setting, in, unharmed));
        int not_made = 0;
        runs += failEveryRequest(1, [&](FailingMemory& memory) {
                    Pcm out = roomForOutput(setting);
                    const bool is_made = memory.during([&] { return render(setting, in, out); });
                    EXPECT_EQ(memory.alive(), 0);
                    EXPECT_TRUE(is_made || memory.hasFailed());
                    EXPECT_TRUE(!is_made || isExpectedOrSilent(out, unharmed));
                    not_made += is_made ? 0 : 1;
                }).runs;
        EXPECT_GT(not_made, 0);
        Pcm later = roomForOutput(setting);
        EXPECT_TRUE(render(setting, in, later));
        EXPECT_EQ(later, unharmed);
        if (HasFailure()) break;
    }
    RecordProperty("runs", runs);
}

/** An effect behind the common interface. */
struct CommonKind {
    const char* name;
    int channels_in;
    int channels_out;
    int (*create)(SonivexEffect** effect);
};

constexpr CommonKind kCommonKinds[] = {
    {"surround, 7.1", 8, 2, [](SonivexEffect** e) { return sonivex_create_surround(e, 8, 48000, 1, 1, 1); }},
    {"MegaBass, stereo", 2, 2,
     [](SonivexEffect** e) { return sonivex_create_surround(e, 2, 44100, 13, 3, 0); }},
    {"dialogue", 2, 2, [](SonivexEffect** e) { return sonivex_create_dialogue(e, 48000, 3.0); }},
    {"normalizer", 6, 6, [](SonivexEffect** e) { return sonivex_create_normalizer(e, 6, 48000); }},
};

// @return a status.
int useCommonInterface(const CommonKind& kind, const std::vector<float>& in, std::vector<float>& out) {
    SonivexEffect* effect = nullptr;
    if (const int status = kind.create(&effect); status != SONIVEX_OK) {
        EXPECT_EQ(effect, nullptr);
        return status;
    }
    const auto channels_in = static_cast<std::size_t>(kind.channels_in);
    const auto channels_out = static_cast<std::size_t>(kind.channels_out);
    const float* planes_in[8] = {};
    float* planes_out[8] = {};
    for (std::size_t i = 0; i < channels_in; ++i) planes_in[i] = in.data() + i * kCall_frames;
    for (std::size_t i = 0; i < channels_out; ++i) planes_out[i] = out.data() + i * kCall_frames;
    int status = SONIVEX_OK;
    for (int call = 0; call < kCalls && status == SONIVEX_OK; ++call) {
        status = sonivex_process_float(effect, in.data(), out.data(), kCall_frames);
    }
    sonivex_reset(effect);
    for (int call = 0; call < kCalls && status == SONIVEX_OK; ++call) {
        status = sonivex_stream_float(effect, planes_in, planes_out, kCall_frames);
    }
    sonivex_release(effect);
    return status;
}

TEST(CommonInterfaceWithoutMemory, ReportsItInCreationAndKeepsNothing) {
    for (const CommonKind& kind : kCommonKinds) {
        SCOPED_TRACE(kind.name);
        std::vector<float> in(static_cast<std::size_t>(kind.channels_in) * kCall_frames, 0.25F);
        std::vector<float> out(static_cast<std::size_t>(kind.channels_out) * kCall_frames);
        int reported = 0;
        failEveryRequest(1, [&](FailingMemory& memory) {
            const int status = memory.during([&] { return useCommonInterface(kind, in, out); });
            EXPECT_EQ(memory.alive(), 0);
            EXPECT_TRUE(status == SONIVEX_OK || status == SONIVEX_ERROR_MEMORY) << status;
            reported += status == SONIVEX_ERROR_MEMORY ? 1 : 0;
        });
        EXPECT_GT(reported, 0);
        if (HasFailure()) break;
    }
}

}  // namespace
}  // namespace test
