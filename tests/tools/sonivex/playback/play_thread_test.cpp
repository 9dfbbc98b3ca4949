#include "play_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "playback_fixture.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::PlayThread;
using sonivex_tool::SoundFeed;

/** A card that takes samples as fast as they come. */
class FastCard {
  public:
    explicit FastCard(std::shared_ptr<SoundFeed> feed)
        : feed_(std::move(feed)), ticket_(feed_->newTicket()), thread_([this] { run(); }) {}
    ~FastCard() {
        stops_ = true;
        thread_.join();
    }

  private:
    void run() {
        std::vector<float> samples(2 * 256);
        while (!stops_) {
            if (feed_->waitingFrames() > 0) {
                feed_->take(ticket_, samples.data(), 256);
            } else {
                std::this_thread::yield();
            }
        }
    }

    std::shared_ptr<SoundFeed> feed_;
    uint64_t ticket_;
    std::atomic<bool> stops_ = false;
    std::thread thread_;
};

class PlayingOnAThread : public test::PlaybackTest {
  protected:
    std::shared_ptr<SoundFeed> feed = std::make_shared<SoundFeed>(4800);

    static void waitForEnd(PlayThread& thread) {
        for (int i = 0; i < 6000 && !thread.hasEnded(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_TRUE(thread.hasEnded());
    }
};

TEST_F(PlayingOnAThread, PlaysToTheEndWhileKeysArePressed) {
    auto playback = open(settings(programme(6.0), "surround"));
    FastCard card(feed);
    PlayThread thread(*playback, feed, {{0.5, PlayAction::NextEffect}, {2.0, PlayAction::Back}});
    for (const PlayAction action : {PlayAction::ToggleEffect, PlayAction::NextType, PlayAction::Louder,
                                    PlayAction::ToggleMatching, PlayAction::ToggleEffect}) {
        thread.act(action);
        thread.status();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    waitForEnd(thread);
    EXPECT_NO_THROW(thread.rethrow());
    EXPECT_GE(thread.status().position_s, 6.0);
    EXPECT_EQ(feed->waitingFrames(), 0);
}

TEST_F(PlayingOnAThread, TakesAnyKeysAndEndsAtAnyMoment) {
    constexpr double kLength_s = 30.0;
    constexpr int kActions = static_cast<int>(PlayAction::Retry) + 1;  // all but Quit
    const std::string path = programme(kLength_s);
    for (uint64_t seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        auto playback = open(settings(path, seed % 2 == 0 ? "surround" : "normalizer"));
        auto own_feed = std::make_shared<SoundFeed>(4800);
        FastCard card(own_feed);
        PlayThread thread(*playback, own_feed, {{0.2, PlayAction::NextEffect}});
        for (int left = random.between(5, 60); left > 0; --left) {
            thread.act(static_cast<PlayAction>(random.between(0, kActions - 1)));
            // The thread publishes in between, so that no lock of the calls around it orders the two.
            std::this_thread::sleep_for(std::chrono::microseconds(random.between(0, 4000)));
            const double position_s = thread.status().position_s;
            EXPECT_GE(position_s, 0.0);
            EXPECT_LE(position_s, kLength_s + 1.0);
            thread.takeEvents();
        }
        if (random.between(0, 1) == 1) thread.stop();
        EXPECT_NO_THROW(thread.rethrow());
    }
}

TEST_F(PlayingOnAThread, StopsAtOnceWithoutACard) {
    auto playback = open(settings(programme(6.0), "surround"));
    PlayThread thread(*playback, feed, {});
    while (feed->waitingFrames() < 4800) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const auto start = std::chrono::steady_clock::now();
    thread.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(feed->waitingFrames(), 4800) << "what was rendered is kept";
}

TEST_F(PlayingOnAThread, AScriptPressesItsKeysInTime) {
    auto playback = open(settings(programme(6.0), "normalizer"));
    FastCard card(feed);
    PlayThread thread(*playback, feed, {{1.0, PlayAction::Quit}});
    waitForEnd(thread);
    EXPECT_NEAR(thread.status().position_s, 1.04, 1e-9);  // with the fade of 40 ms
}

}  // namespace
