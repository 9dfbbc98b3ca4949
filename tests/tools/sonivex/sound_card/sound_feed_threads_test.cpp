#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "sound_feed.h"

namespace {

using sonivex_tool::SoundFeed;

TEST(SoundFeedThreads, EveryFrameArrivesOnceAndInOrder) {
    constexpr int kFrames = 200'000;
    constexpr int kRing_frames = 512;
    SoundFeed feed(kRing_frames);
    const uint64_t ticket = feed.newTicket();
    std::atomic<bool> is_written = false;
    const auto write = [&feed](int i) {
        // The right channel belongs to the left one, and shows whether a fade has lowered the frame.
        const std::array<float, 2> frame = {static_cast<float>(i), i % 2 == 1 ? 1.0F : 3.0F};
        return feed.write(frame.data(), 1) == 1;
    };
    std::thread writer([&] {
        for (int i = 1; i <= kFrames - kRing_frames;) {
            if (write(i)) {
                ++i;
            } else {
                std::this_thread::yield();
            }
        }
        is_written = true;
    });
    float last = 0.0F;
    std::vector<float> samples(2 * 64);
    const auto take = [&] {
        feed.take(ticket, samples.data(), 64);
        for (size_t i = 0; i < samples.size(); i += 2) {
            if (samples[i + 1] != 1.0F && samples[i + 1] != 3.0F) continue;
            ASSERT_EQ(static_cast<int>(samples[i]) % 2 == 1, samples[i + 1] == 1.0F) << "half a frame";
            ASSERT_GT(samples[i], last);
            last = samples[i];
        }
    };
    while (!HasFatalFailure() && (!is_written || feed.waitingFrames() > 0)) take();
    writer.join();
    // The end comes without a gap, so that no fade lowers the last frame.
    for (int i = kFrames - kRing_frames + 1; i <= kFrames; ++i) ASSERT_TRUE(write(i));
    feed.finish();
    while (!HasFatalFailure() && feed.waitingFrames() > 0) take();
    EXPECT_EQ(last, static_cast<float>(kFrames));
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
