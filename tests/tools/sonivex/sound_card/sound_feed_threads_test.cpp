#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "sound_feed.h"

namespace {

using sonivex_tool::SoundFeed;

TEST(SoundFeedThreads, EveryFrameArrivesOnceAndInOrder) {
    constexpr int kFrames = 200'000;
    SoundFeed feed(512);
    const uint64_t ticket = feed.newTicket();
    std::thread writer([&feed] {
        for (int i = 1; i <= kFrames;) {
            const auto value = static_cast<float>(i);
            const std::array<float, 2> frame = {value, -value};
            if (feed.write(frame.data(), 1) == 1) {
                ++i;
            } else {
                std::this_thread::yield();
            }
        }
        feed.finish();
    });
    float last = 0.0F;
    int whole_frames = 0;
    std::vector<float> samples(2 * 64);
    while (last < static_cast<float>(kFrames)) {
        feed.take(ticket, samples.data(), 64);
        for (size_t i = 0; i < samples.size(); i += 2) {
            ASSERT_EQ(samples[i + 1], -samples[i]);  // never half a frame
            // Fades around gaps only lower a value.
            ASSERT_LE(samples[i], last + 1.0F + static_cast<float>(SoundFeed::kGapFade_frames));
            if (samples[i] > last) {
                last = samples[i];
                ++whole_frames;
            }
        }
    }
    writer.join();
    EXPECT_EQ(last, static_cast<float>(kFrames));
    EXPECT_GT(whole_frames, 0);
    EXPECT_EQ(feed.waitingFrames(), 0);
}

// Each of two cards replaces the other again and again while that one takes.
TEST(SoundFeedThreads, EveryFrameGoesToOneCardAlthoughCardsAreReplaced) {
    constexpr size_t kFrames = 1'000'000;
    SoundFeed feed(kFrames);
    for (size_t i = 1; i <= kFrames; ++i) {
        // The right channel shows whether a fade has lowered the frame.
        const std::array<float, 2> frame = {static_cast<float>(i), 1.0F};
        feed.write(frame.data(), 1);
    }
    std::array<std::vector<int>, 2> heard = {std::vector<int>(kFrames + 1), std::vector<int>(kFrames + 1)};
    const auto take = [&](size_t card) {
        std::vector<float> samples(2 * 256);
        while (feed.waitingFrames() > 0) {
            feed.take(feed.newTicket(), samples.data(), 256);
            for (size_t i = 0; i < samples.size(); i += 2) {
                if (samples[i + 1] == 1.0F) ++heard[card][static_cast<size_t>(samples[i])];
            }
        }
    };
    std::array<std::thread, 2> cards = {std::thread(take, 0), std::thread(take, 1)};
    for (std::thread& card : cards) card.join();
    for (size_t i = SoundFeed::kGapFade_frames + 1; i <= kFrames; ++i)
        ASSERT_EQ(heard[0][i] + heard[1][i], 1) << "frame " << i;
}

}  // namespace
