#include "sound_feed.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using sonivex_tool::SoundFeed;
using testing::Each;

std::vector<float> constant(int frames, float value) {
    return std::vector<float>(static_cast<size_t>(frames) * 2, value);
}

std::vector<float> take(SoundFeed& feed, uint64_t ticket, int frames) {
    std::vector<float> samples(static_cast<size_t>(frames) * 2, -9.0F);
    feed.take(ticket, samples.data(), frames);
    return samples;
}

float largestStep(const std::vector<float>& samples) {
    float largest = 0.0F;
    for (size_t i = 2; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - samples[i - 2]));
    return largest;
}

TEST(SoundFeed, DeliversWhatWasWrittenInOrder) {
    SoundFeed feed(1000);
    const uint64_t ticket = feed.newTicket();
    std::vector<float> written;
    for (int i = 0; i < 2000; ++i) written.push_back(static_cast<float>(i) / 2000.0F);
    ASSERT_EQ(feed.write(written.data(), 1000), 1000);

    const std::vector<float> taken = take(feed, ticket, 1000);

    const std::vector<float> expected(written.begin() + 2 * SoundFeed::kGapFade_frames, written.end());
    EXPECT_EQ(std::vector<float>(taken.begin() + 2 * SoundFeed::kGapFade_frames, taken.end()), expected);
    EXPECT_EQ(feed.gaps(), 0U);
}

TEST(SoundFeed, TakesOnlyWhatThereIsRoomFor) {
    SoundFeed feed(100);
    const std::vector<float> samples = constant(150, 0.5F);
    EXPECT_EQ(feed.write(samples.data(), 150), 100);
    EXPECT_EQ(feed.waitingFrames(), 100);
    EXPECT_EQ(feed.write(samples.data(), 1), 0);
}

TEST(SoundFeed, FadesAroundAGapAndCountsIt) {
    SoundFeed feed(4000);
    const uint64_t ticket = feed.newTicket();
    const std::vector<float> loud = constant(1000, 1.0F);
    feed.write(loud.data(), 1000);
    std::vector<float> heard = take(feed, ticket, 1500);
    EXPECT_EQ(feed.gaps(), 1U);
    EXPECT_EQ(heard.back(), 0.0F);
    feed.write(loud.data(), 1000);
    const std::vector<float> after = take(feed, ticket, 1000);
    heard.insert(heard.end(), after.begin(), after.end());
    EXPECT_EQ(heard.back(), 1.0F);
    // A raised cosine over 256 frames rises by at most pi / 2 / 256 for each frame.
    EXPECT_LE(largestStep(heard), 0.0062F);
    EXPECT_EQ(feed.gaps(), 1U);
}

TEST(SoundFeed, DoesNotCountTheSilenceBeforeAndAfterTheSound) {
    SoundFeed feed(1000);
    const uint64_t ticket = feed.newTicket();
    EXPECT_THAT(take(feed, ticket, 300), Each(0.0F));
    const std::vector<float> samples = constant(500, 0.25F);
    feed.write(samples.data(), 500);
    feed.finish();
    take(feed, ticket, 1000);
    EXPECT_EQ(feed.gaps(), 0U);
}

TEST(SoundFeed, GivesNothingToACardThatWasReplaced) {
    SoundFeed feed(1000);
    const uint64_t old_ticket = feed.newTicket();
    const uint64_t ticket = feed.newTicket();
    const std::vector<float> samples = constant(600, 0.5F);
    feed.write(samples.data(), 600);
    EXPECT_THAT(take(feed, old_ticket, 600), Each(0.0F));
    EXPECT_EQ(feed.framesAsked(), 0U);
    EXPECT_EQ(take(feed, ticket, 600).back(), 0.5F);
    EXPECT_EQ(feed.framesAsked(), 600U);
}

}  // namespace
