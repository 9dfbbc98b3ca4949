#include "sdl_sound_card.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>

#include "failure.h"

namespace {

using namespace sonivex_tool;
using testing::StartsWith;

class SdlSoundCardTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(setenv("SDL_AUDIODRIVER", "dummy", 1), 0); }

    // Waits until the card asks for more samples than so far.
    bool asksForMore() const {
        const uint64_t before = feed_->framesAsked();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (feed_->framesAsked() == before) {
            if (std::chrono::steady_clock::now() >= end) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    std::shared_ptr<SoundFeed> feed_ = std::make_shared<SoundFeed>(1000);
};

TEST_F(SdlSoundCardTest, NamesACardThatDoesNotOpen) {
    const uint64_t ticket = feed_->newTicket();
    try {
        openSdlSoundCard({.device = "no such card"}, feed_);
        FAIL() << "it opens";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::NoSoundCard);
        EXPECT_THAT(failure.what(), StartsWith("cannot open sound card \"no such card\": "));
    }
    EXPECT_EQ(feed_->newTicket(), ticket + 1) << "the card before keeps its ticket";
}

TEST_F(SdlSoundCardTest, AnAbandonedCardStaysOpen) {
    // A card that stays open needs a process of its own, which must not clean up after SDL while it plays.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            auto card = openSdlSoundCard({}, feed_);
            const bool was_there = !card->isGone();
            card->abandon();
            card.reset();
            _exit(was_there && asksForMore() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
