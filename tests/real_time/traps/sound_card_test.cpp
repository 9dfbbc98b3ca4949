// The callback with which a sound card fetches samples, and what it calls.
#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "real_time/traps/real_time_section.h"
#include "sdl_sound_card.h"
#include "sound_feed.h"

namespace {

using sonivex_tool::SoundFeed;
using test::RealTimeSection;

constexpr int kCall_frames = 1024;

// The callback that was given to SDL. SDL's own thread gets another one, which plays silence.
SDL_AudioCallback callback = nullptr;
void* callback_data = nullptr;

void playSilence(void* /*data*/, Uint8* bytes, int length) {
    std::fill_n(bytes, length, Uint8{0});
}

}  // namespace

extern "C" {

SDL_AudioDeviceID __real_SDL_OpenAudioDevice(const char* device, int is_capture, const SDL_AudioSpec* wanted,
                                             SDL_AudioSpec* obtained, int allowed_changes);
SDL_AudioDeviceID __wrap_SDL_OpenAudioDevice(const char* device, int is_capture, const SDL_AudioSpec* wanted,
                                             SDL_AudioSpec* obtained, int allowed_changes);

SDL_AudioDeviceID __wrap_SDL_OpenAudioDevice(const char* device, int is_capture, const SDL_AudioSpec* wanted,
                                             SDL_AudioSpec* obtained, int allowed_changes) {
    callback = wanted->callback;
    callback_data = wanted->userdata;
    SDL_AudioSpec silent = *wanted;
    silent.callback = &playSilence;
    return __real_SDL_OpenAudioDevice(device, is_capture, &silent, obtained, allowed_changes);
}
}

namespace {

TEST(SoundCardTraps, TheCallbackIsNotTrapped) {
    ASSERT_EQ(setenv("SDL_AUDIODRIVER", "dummy", 1), 0);
    const auto feed = std::make_shared<SoundFeed>(4 * kCall_frames);
    const auto card = sonivex_tool::openSdlSoundCard({.device = "", .rate_hz = 48000}, feed);
    ASSERT_NE(callback, nullptr);
    const std::vector<float> samples(std::size_t{2} * 3 * kCall_frames, 0.5F);
    ASSERT_EQ(feed->write(samples.data(), 3 * kCall_frames), 3 * kCall_frames);

    std::array<float, std::size_t{2} * kCall_frames> heard{};
    float second_call = 0.0F;
    {
        const RealTimeSection section;
        for (int call = 0; call < 6; ++call) {
            callback(callback_data, reinterpret_cast<Uint8*>(heard.data()), sizeof heard);
            if (call == 1) second_call = heard.front();
        }
    }
    EXPECT_EQ(second_call, 0.5F);
    EXPECT_EQ(heard.back(), 0.0F) << "the callback found no end";
    EXPECT_EQ(feed->gaps(), 1U);
}

TEST(SoundCardTraps, ACardThatWasGivenUpIsNotTrapped) {
    SoundFeed feed(kCall_frames);
    const std::uint64_t old_ticket = feed.newTicket();
    const std::uint64_t ticket = feed.newTicket();
    std::vector<float> samples(std::size_t{2} * kCall_frames, 0.5F);
    ASSERT_EQ(feed.write(samples.data(), kCall_frames), kCall_frames);
    {
        const RealTimeSection section;
        feed.take(old_ticket, samples.data(), kCall_frames);
    }
    EXPECT_EQ(samples.back(), 0.0F);
    {
        const RealTimeSection section;
        feed.take(ticket, samples.data(), kCall_frames);
    }
    EXPECT_EQ(samples.back(), 0.5F);
}

}  // namespace
