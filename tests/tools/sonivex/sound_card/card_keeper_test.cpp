#include "card_keeper.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"

namespace {

using sonivex_tool::CardKeeper;
using sonivex_tool::ExitCode;
using sonivex_tool::Failure;
using sonivex_tool::SoundCard;
using sonivex_tool::SoundCardSettings;
using sonivex_tool::SoundFeed;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;

/** Records what happened to the cards of a test, and tells the next ones what to do. */
struct Cards {
    std::vector<std::string> opened;
    int closed = 0;
    int abandoned = 0;
    bool is_gone = false;  // the newest card
    bool refuses = false;  // to be opened
    std::optional<std::string> refused_device;
};

class TestCard final : public SoundCard {
  public:
    explicit TestCard(Cards& cards) : cards_(cards) {}
    ~TestCard() override {
        if (!is_abandoned_) ++cards_.closed;
    }
    bool isGone() override { return cards_.is_gone; }
    void abandon() override {
        is_abandoned_ = true;
        ++cards_.abandoned;
    }
    int latency_frames() const override { return 0; }

  private:
    Cards& cards_;
    bool is_abandoned_ = false;
};

class CardKeeperTest : public testing::Test {
  protected:
    std::unique_ptr<SoundCard> open(const SoundCardSettings& settings, const std::shared_ptr<SoundFeed>& to) {
        if (cards.refuses || settings.device == cards.refused_device)
            throw Failure(ExitCode::NoSoundCard, "no such card");
        cards.opened.push_back(settings.device);
        cards.is_gone = false;
        ticket = to->newTicket();
        return std::make_unique<TestCard>(cards);
    }
    std::unique_ptr<CardKeeper> keeper() {
        return std::make_unique<CardKeeper>(
            [this](const SoundCardSettings& settings, std::shared_ptr<SoundFeed> to) {
                return open(settings, to);
            },
            SoundCardSettings{.device = "headphones", .rate_hz = 48000}, feed, now);
    }
    void play() {
        std::vector<float> samples(2 * 64);
        feed->take(ticket, samples.data(), 64);
    }
    // Checks every 100 ms for some time, or until there is a line for the user, which is returned.
    std::optional<std::string> watch(CardKeeper& kept, milliseconds duration) {
        constexpr milliseconds kInterval{100};
        for (milliseconds passed{0}; passed < duration; passed += kInterval) {
            now += kInterval;
            if (auto line = kept.check(now)) return line;
        }
        return std::nullopt;
    }

    Cards cards;
    std::shared_ptr<SoundFeed> feed = std::make_shared<SoundFeed>(1000);
    uint64_t ticket = 0;
    CardKeeper::Clock::time_point now{};
};

TEST_F(CardKeeperTest, ACardThatPlaysIsKept) {
    const auto kept = keeper();
    for (int i = 0; i < 100; ++i) {
        now += seconds(1);
        play();
        EXPECT_FALSE(kept->check(now).has_value());
    }
    EXPECT_THAT(cards.opened, ElementsAre("headphones"));
}

TEST_F(CardKeeperTest, TheDefaultCardReplacesOneThatIsGone) {
    const auto kept = keeper();
    cards.is_gone = true;
    const auto line = kept->check(now);
    ASSERT_TRUE(line.has_value());
    EXPECT_THAT(*line, HasSubstr("is gone"));
    EXPECT_THAT(cards.opened, ElementsAre("headphones", ""));
    EXPECT_EQ(cards.closed, 1);
}

TEST_F(CardKeeperTest, ACardThatStallsIsOpenedAgainAndTheOldOneNotClosed) {
    const auto kept = keeper();
    play();
    EXPECT_FALSE(kept->check(now).has_value());
    EXPECT_FALSE(watch(*kept, CardKeeper::kStallLimit - milliseconds(100)).has_value());
    const auto line = watch(*kept, milliseconds(100));
    ASSERT_TRUE(line.has_value());
    EXPECT_THAT(*line, HasSubstr("has stalled; it was opened again"));
    EXPECT_THAT(cards.opened, ElementsAre("headphones", "headphones"));
    EXPECT_EQ(cards.abandoned, 1);
    EXPECT_EQ(cards.closed, 0);
    EXPECT_FALSE(watch(*kept, CardKeeper::kStallLimit - milliseconds(100)).has_value())
        << "the new one has time too";
}

TEST_F(CardKeeperTest, TheDefaultCardReplacesOneThatStallsAgain) {
    const auto kept = keeper();
    EXPECT_TRUE(watch(*kept, seconds(4)).has_value());
    const auto line = watch(*kept, seconds(4));
    ASSERT_TRUE(line.has_value());
    EXPECT_THAT(*line, HasSubstr("has stalled; playing goes on with the default one"));
    EXPECT_THAT(cards.opened, ElementsAre("headphones", "headphones", ""));
}

TEST_F(CardKeeperTest, TheDefaultCardReplacesAStalledOneThatDoesNotOpenAgain) {
    const auto kept = keeper();
    cards.refused_device = "headphones";
    const auto line = watch(*kept, seconds(4));
    ASSERT_TRUE(line.has_value());
    EXPECT_THAT(*line, HasSubstr("has stalled; playing goes on with the default one"));
    EXPECT_THAT(cards.opened, ElementsAre("headphones", ""));
}

TEST_F(CardKeeperTest, TimeInWhichTheProgramDidNotRunIsNoStall) {
    const auto kept = keeper();
    for (int i = 0; i < 3; ++i) {
        now += seconds(5);
        EXPECT_FALSE(kept->check(now).has_value());
    }
    EXPECT_THAT(cards.opened, ElementsAre("headphones"));
}

TEST_F(CardKeeperTest, AStalledCardIsKeptWhileNoOtherOpens) {
    const auto kept = keeper();
    cards.refuses = true;
    const auto line = watch(*kept, seconds(4));
    ASSERT_TRUE(line.has_value());
    EXPECT_THAT(*line, HasSubstr("has stalled, and no other plays; waiting for it"));
    EXPECT_FALSE(watch(*kept, seconds(5)).has_value()) << "that is said once";
    EXPECT_EQ(cards.abandoned, 0);

    play();
    EXPECT_EQ(watch(*kept, milliseconds(100)), "the sound card plays again");
    EXPECT_FALSE(watch(*kept, seconds(2)).has_value());
    EXPECT_EQ(cards.abandoned, 0);
    EXPECT_EQ(cards.closed, 0);
}

TEST_F(CardKeeperTest, AnotherCardThatOpensLaterReplacesTheStalledOne) {
    const auto kept = keeper();
    cards.refuses = true;
    EXPECT_TRUE(watch(*kept, seconds(4)).has_value());
    cards.refuses = false;
    EXPECT_TRUE(watch(*kept, milliseconds(1100)).has_value());
    EXPECT_EQ(cards.abandoned, 1);
}

TEST_F(CardKeeperTest, AStallThatDoesNotEndEndsThePlayIfNoOtherCardOpens) {
    const auto kept = keeper();
    cards.refuses = true;
    const auto start = now;
    EXPECT_TRUE(watch(*kept, seconds(4)).has_value());
    try {
        watch(*kept, seconds(20));
        FAIL() << "it went on";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("has stalled"));
        EXPECT_THAT(failure.what(), HasSubstr("no such card"));
        EXPECT_EQ(failure.exitCode(), ExitCode::NoSoundCard);
    }
    EXPECT_EQ(now - start, CardKeeper::kLongestStall);
}

TEST_F(CardKeeperTest, CardsThatAllStallEndThePlay) {
    const auto kept = keeper();
    for (int i = 0; i < CardKeeper::kMostFailures; ++i) {
        play();  // as many samples as fit into the card
        EXPECT_TRUE(watch(*kept, seconds(4)).has_value());
    }
    play();
    EXPECT_THROW(watch(*kept, seconds(4)), Failure);
}

TEST_F(CardKeeperTest, TheFourthFailureWithinASpanEndsThePlay) {
    const auto kept = keeper();
    for (int i = 0; i < CardKeeper::kMostFailures; ++i) {
        cards.is_gone = true;
        EXPECT_TRUE(kept->check(now).has_value());
    }
    cards.is_gone = true;
    try {
        kept->check(now);
        FAIL() << "it went on";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::NoSoundCard);
        EXPECT_STREQ(failure.what(), "the sound card is gone, and those that replaced it have failed, too");
    }
}

TEST_F(CardKeeperTest, FailuresLongAgoDoNotCount) {
    const auto kept = keeper();
    for (int i = 0; i < 10; ++i) {
        for (int second = 0; second < 16; ++second) {
            play();
            EXPECT_FALSE(watch(*kept, seconds(1)).has_value());
        }
        cards.is_gone = true;
        EXPECT_TRUE(kept->check(now).has_value());
    }
}

TEST_F(CardKeeperTest, SaysWhyNoOtherCardOpens) {
    const auto kept = keeper();
    cards.is_gone = true;
    cards.refuses = true;
    try {
        kept->check(now);
        FAIL() << "it went on";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("is gone"));
        EXPECT_THAT(failure.what(), HasSubstr("no such card"));
        EXPECT_EQ(failure.exitCode(), ExitCode::NoSoundCard);
    }
}

TEST_F(CardKeeperTest, ClosingLeavesAStalledCardBehind) {
    keeper()->close(milliseconds(5));
    EXPECT_EQ(cards.abandoned, 1);
    EXPECT_EQ(cards.closed, 0);
}

}  // namespace
