// Checks the shares of working time that a Player reports to its filter's load guard, on a clock that the
// test moves.
#include <condition_variable>
#include <mutex>
#include <thread>

#include "player_fixture.h"
#include "support/clocks/virtual_clock.h"

namespace Vorlin::test {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using ::test::VirtualClock;
using testing::ElementsAre;
using testing::IsEmpty;

// Holds the caller of `pass` until the test opens it.
class Barrier {
  public:
    void pass() {
        std::unique_lock lock(mutex_);
        is_reached_ = true;
        changed_.notify_all();
        changed_.wait(lock, [this] { return is_open_; });
    }
    void waitUntilReached() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return is_reached_; });
    }
    void open() {
        const std::lock_guard lock(mutex_);
        is_open_ = true;
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool is_reached_ = false;
    bool is_open_ = false;
};

class PlayerReportedTime : public PlayerFixture {
  protected:
    // Makes each frame take the next of these times.
    void work(std::vector<microseconds> times) {
        script_->work = [this, times = std::move(times), next = size_t{0}]() mutable {
            clock_.work(times.at(next++));
        };
    }
    void waitForFinished(int frames) const {
        while (script_->finished < frames) std::this_thread::yield();
    }

    VirtualClock clock_;
};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerReportedTime, testing::Bool(), activity);

TEST_F(PlayerReportedTime, IsSharedByTheFramesThatComeOutOfOnePush) {
    work({milliseconds(5), milliseconds(15), milliseconds(8), milliseconds(13)});
    const auto player = makePlayer(false);
    player->setVideoFps(25);
    for (int pair = 0; pair < 2; ++pair) {
        script_->runs_to_skip = 1;  // the second push works on both frames
        pushFrames(*player, 2);
    }
    EXPECT_THAT(script_->samples_ms, ElementsAre(10, 10, 10, 11));
}

TEST_F(PlayerReportedTime, IsSharedByTheFramesThatComeOutOfAWorkerTogether) {
    Barrier barrier;
    work({milliseconds(5), milliseconds(15)});
    script_->keeps = [&barrier](const NumberedFrame& frame) {
        if (frame.number == 0) barrier.pass();
        return true;
    };
    const auto player = makePlayer(true);
    player->setVideoFps(25);
    pushFrames(*player, 2);
    EXPECT_THAT(numbers_out_, IsEmpty());
    barrier.open();
    waitForFinished(2);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(script_->samples_ms, ElementsAre(10, 10));
}

TEST_F(PlayerReportedTime, KeepsThePartOfAMillisecondThatIsLeft) {
    work(std::vector<microseconds>(5, microseconds(3400)));
    const auto player = makePlayer(true);
    player->setVideoFps(25);
    for (int frame = 0; frame < 5; ++frame) {
        pushFrames(*player, 1);
        EXPECT_EQ(player->drain(), 0);
    }
    EXPECT_THAT(script_->samples_ms, ElementsAre(3, 3, 4, 3, 4));  // of 3.4, 6.8, 10.2, 13.6 and 17.0
}

TEST_F(PlayerReportedTime, ExcludesTheWaitsOfAWorker) {
    script_->work = [this] { clock_.wait(milliseconds(30)); };
    const auto player = makePlayer(true);
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(script_->samples_ms, ElementsAre(0));
}

TEST_F(PlayerReportedTime, IncludesTheWaitsInsideAPush) {
    script_->work = [this] { clock_.wait(milliseconds(30)); };
    const auto player = makePlayer(false);
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_THAT(script_->samples_ms, ElementsAre(30));
}

TEST_P(PlayerReportedTime, ExcludesTheTimeInWhichNoFrameIsInside) {
    work({milliseconds(5), milliseconds(6)});
    const auto player = makePlayer();
    player->setVideoFps(25);
    for (int frame = 0; frame < 2; ++frame) {
        pushFrames(*player, 1);
        EXPECT_EQ(player->drain(), 0);
        clock_.work(milliseconds(40));
    }
    EXPECT_THAT(script_->samples_ms, ElementsAre(5, 6));
}

// The filter keeps its speed of 1, so its load guard has a time budget.
TEST_P(PlayerReportedTime, GoesOnAfterASpeedThatTheFilterRefuses) {
    work({milliseconds(5)});
    const auto player = makePlayer();
    player->setVideoFps(25);
    player->setSpeed(1e-60);  // beyond the range of a float
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(script_->samples_ms, ElementsAre(5));
}

TEST_P(PlayerReportedTime, ExcludesTheWorkOnAFrameThatNobodyWatched) {
    work({milliseconds(40), milliseconds(5)});
    const auto player = makePlayer();
    pushFrames(*player, 1);  // no frame rate yet
    EXPECT_EQ(player->drain(), 0);
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(script_->samples_ms, ElementsAre(5));
}

// The frame that nobody watched comes out while the next one is inside, so the worker is never idle.
TEST_F(PlayerReportedTime, ExcludesTheWorkThatNobodyWatchedInTheMiddleOfAStream) {
    Barrier barrier;
    work({milliseconds(40), milliseconds(5), milliseconds(6)});
    script_->keeps = [&barrier](const NumberedFrame& frame) {
        if (frame.number == 1) barrier.pass();
        return true;
    };
    const auto player = makePlayer(true);
    pushFrames(*player, 2);
    barrier.waitUntilReached();  // frame 0 is finished
    pushFrames(*player, 1);
    EXPECT_THAT(numbers_out_, ElementsAre(0));
    player->setVideoFps(25);
    barrier.open();
    waitForFinished(3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(script_->samples_ms, ElementsAre(5, 6));
}

}  // namespace
}  // namespace Vorlin::test
