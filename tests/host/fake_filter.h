#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/thread.h"

namespace Vorlin::test {

/** A frame that its number identifies. */
class NumberedFrame final : public IQFFrame {
  public:
    NumberedFrame(int frame_number, const audioInfo& info) : IQFFrame(info), number(frame_number) {}
    const int number;
};

/** Directs a FakeFilter and records its calls. The test shares it with the clone and sets it before it pushes
 *  frames. */
struct Script {
    std::function<bool(const NumberedFrame&)> keeps = [](const NumberedFrame&) { return true; };
    std::function<void()> work = [] {};  // runs for each frame that is neither bypassed nor given up
    bool init_succeeds = true;
    bool init_throws = false;
    int options_without_memory = 0;  // the next calls of setOption that throw
    bool sends_at_its_end = false;   // an event, while the filter is destroyed
    bool eats_fences = false;
    int frames_per_run = std::numeric_limits<int>::max();  // frames after which a run of the loop ends
    uint64_t overload_from_ms = std::numeric_limits<uint64_t>::max();  // shortest time that trips the guard
    std::atomic<bool> is_stuck{false};                                 // no frame moves inside the filter
    std::atomic<int> runs_to_skip{0};                                  // runs of the loop that do nothing

    std::atomic<int> processed{0};
    std::atomic<int> finished{0};  // frames put into the output queue, fences included
    int refusals = 0;              // pushes that returned "try again"
    int flushes = 0;
    bool is_invalid = true;
    int times_made_valid = 0;
    bool is_destroyed = false;
    std::vector<IQFFrame::audioInfo> fences;  // pushed frames that the player made itself
    bool fences_hold_samples = true;
    std::vector<uint64_t> samples_ms;  // arguments of checkTimeConsume
    std::vector<std::string> options;
    std::shared_ptr<const qfThreadClock> worker_clock;
};

/** A filter with the queues, the loop and the load guard's events of a real one. A script replaces its
 *  processing. */
class FakeFilter final : public IAudioFilter, public filterPrototype {
  public:
    static constexpr char kName[] = "FakeFilter";

    /** Makes the prototype and registers it under `supported_name`. */
    FakeFilter(std::string supported_name, std::shared_ptr<Script> script);
    FakeFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active,
               std::shared_ptr<Script> script);
    ~FakeFilter() override;

    bool setOption(const std::string& key, const std::string& value, const std::string& extra) override;
    bool init(uint64_t flags) override;
    int push(std::unique_ptr<IQFFrame>& frame, uint64_t time_out) override;
    int pull(std::unique_ptr<IQFFrame>& frame, uint64_t time_out) override;
    void flush() override;
    std::string getName() override { return kName; }
    bool is_supported(const std::string& name, int, int, int) override { return name == supported_name_; }
    IAudioFilter* clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) override;
    void setInvalid(bool invalid) override;
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override;
    void checkTimeConsume(uint64_t elapsed) override;

    /** Sends an event to the player, as the load guard does. */
    void send(const char* event);

  private:
    using Queue = std::deque<std::unique_ptr<IQFFrame>>;

    int loop();
    std::unique_ptr<IQFFrame> take();
    bool treat(const IQFFrame& frame);

    const std::string supported_name_;
    const std::shared_ptr<Script> script_;
    bool is_prototype_ = false;
    std::mutex mutex_;  // guards both queues
    Queue in_;
    Queue out_;
    std::atomic<bool> invalid_{true};
    bool over_fps_ = false;
    int fps_ = 0;
    int speed_ = 1;
    std::unique_ptr<qfThread> thread_;  // last member, so the thread ends before the others are destroyed
};

}  // namespace Vorlin::test
