// Checks for how long a Player waits for a filter that takes no frame, on a clock that the test moves.
#include <gtest/gtest.h>

#include <deque>

#include "support/clocks/virtual_clock.h"
#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/player.h"
#include "vorlin/results.h"

extern "C" {
#include <libavutil/error.h>
}

namespace Vorlin::test {
namespace {

using std::chrono::milliseconds;
using ::test::VirtualClock;

// Sets the manner of a SlowFilter.
struct Slowness {
    VirtualClock clock;
    milliseconds refusal{0};  // time that each refused push takes
    int refusals = 0;         // pushes that the filter refuses yet
    bool hands_out = false;   // a refused push brings one of the frames inside out
    int pushes = 0;
};

struct PlainFrame final : IQFFrame {
    PlainFrame() : IQFFrame({1, 2, 48000, 1024, 3}) {}
};

class SlowFilter final : public IAudioFilter, public filterPrototype {
  public:
    explicit SlowFilter(Slowness& slowness) : slowness_(slowness) { addPrototype(this); }
    SlowFilter(const IQFFrame::audioInfo& info, Slowness& slowness)
        : IAudioFilter(info, info, false), slowness_(slowness) {}

    bool setOption(const std::string&, const std::string&, const std::string&) override { return true; }
    bool init(uint64_t) override { return true; }
    int push(std::unique_ptr<IQFFrame>& frame, uint64_t) override {
        ++slowness_.pushes;
        if (slowness_.refusals > 0) {
            --slowness_.refusals;
            slowness_.clock.wait(slowness_.refusal);
            ready_ = slowness_.hands_out && !inside_.empty() ? 1 : 0;
            return kTryAgain;
        }
        inside_.push_back(std::move(frame));
        return kSuccess;
    }
    int pull(std::unique_ptr<IQFFrame>& frame, uint64_t) override {
        if (ready_ == 0 || inside_.empty()) return kTryAgain;
        --ready_;
        frame = std::move(inside_.front());
        inside_.pop_front();
        return kSuccess;
    }
    void flush() override { inside_.clear(); }
    std::string getName() override { return "SlowFilter"; }
    bool is_supported(const std::string& name, int, int, int) override { return name == "slow"; }
    IAudioFilter* clone(IQFFrame::audioInfo info, IQFFrame::audioInfo, bool) override {
        return new SlowFilter(info, slowness_);
    }
    void setInvalid(bool) override {}
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override { return false; }
    void checkTimeConsume(uint64_t) override {}

  private:
    Slowness& slowness_;
    std::deque<std::unique_ptr<IQFFrame>> inside_;
    int ready_ = 0;
};

class PlayerStall : public testing::Test {
  protected:
    int push() { return player_->push(std::make_unique<PlainFrame>()); }

    Slowness slowness_;
    SlowFilter prototype_{slowness_};
    int out_ = 0;
    std::unique_ptr<Player> player_ =
        Player::create(nullptr, {.filter_name = "slow", .active = false, .stall_limit = milliseconds(10'000)},
                       [this](std::unique_ptr<IQFFrame>) { ++out_; });
};

TEST_F(PlayerStall, EndsAPushAtTheLimit) {
    slowness_.refusal = milliseconds(2'500);
    slowness_.refusals = 100;
    EXPECT_EQ(push(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(slowness_.pushes, 4);
}

TEST_F(PlayerStall, IsNoneBelowTheLimit) {
    slowness_.refusal = milliseconds(2'500);
    slowness_.refusals = 3;
    EXPECT_EQ(push(), 0);
    EXPECT_EQ(slowness_.pushes, 4);
}

TEST_F(PlayerStall, BeginsAnewWithEveryFrameThatComesOut) {
    for (int frame = 0; frame < 2; ++frame) ASSERT_EQ(push(), 0);
    slowness_.refusal = milliseconds(6'000);
    slowness_.hands_out = true;
    slowness_.refusals = 3;
    EXPECT_EQ(push(), 0) << "frames came out after 6 and 12 s, and the filter had room after 18 s";
    EXPECT_EQ(out_, 2);
}

}  // namespace
}  // namespace Vorlin::test
