#include "random_host/random_host.h"
#include "soak/lanes.h"

namespace test {

namespace {

class FilterLane final : public Lane {
  public:
    FilterLane(std::uint64_t seed, bool has_workers, const DropLog& log)
        : bytes_(seed),
          host_(bytes_,
                {.workers = has_workers ? Habits::Workers::kAlways : Habits::Workers::kNever,
                 .is_hostile = false,
                 .longest_frames = kLongest_frames,
                 .may_dump = true,
                 .longest_wait_us = has_workers ? kLongestWait_us : 0},
                log) {}

    void play(double audio_s) override {
        target_s_ += audio_s;
        while (host_.counts().audio_s < target_s_) host_.step();
        host_.rest();
    }

    HostCounts counts() const override { return host_.counts(); }

  private:
    static constexpr int kLongest_frames = 8192;
    static constexpr int kLongestWait_us = 10'000;

    SeededBytes bytes_;
    RandomHost host_;
    double target_s_ = 0;
};

}  // namespace

std::unique_ptr<Lane> makeFilterLane(std::uint64_t seed, bool has_workers, const DropLog& log) {
    return std::make_unique<FilterLane>(seed, has_workers, log);
}

}  // namespace test
