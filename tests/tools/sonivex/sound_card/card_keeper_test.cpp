#include "card_keeper.h"

#include <gmock/gmock.h>

#include <memory>
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

/** What happened to the cards of a test, and what the next ones do. */
struct Cards {
    std::vector<std::string> opened;
    int closed = 0;
    int abandoned = 0;
    bool is_gone = false;  // the newest card
    bool refuses = false;  // to be opened
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
        if (cards.refuses) throw Failure(ExitCode::NoSoundCard, "no such card");
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

TEST_F(CardKeeperTest, ACardThatStallsIsLeftBehindAndNotClosed) {
    const auto kept = keeper();
    play();
    EXPECT_FALSE(kept->check(now).has_value());
    EXPECT_FALSE(kept->check(now + CardKeeper::kStallLimit - milliseconds(1)).has_value());
    const auto line = kept->check(now + CardKeeper::kStallLimit);
    ASSERT_TRUE(line.has_value());
    EXPECT_THAT(*line, HasSubstr("has stalled"));
    EXPECT_EQ(cards.abandoned, 1);
    EXPECT_EQ(cards.closed, 0);
    EXPECT_FALSE(kept->check(now + CardKeeper::kStallLimit + seconds(1)).has_value())
        << "the new one has time too";
}

TEST_F(CardKeeperTest, TheFourthFailureInTenSecondsEndsThePlay) {
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
    }
}

TEST_F(CardKeeperTest, FailuresLongAgoDoNotCount) {
    const auto kept = keeper();
    for (int i = 0; i < 10; ++i) {
        now += seconds(11);
        play();
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
