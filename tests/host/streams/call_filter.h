// A filter that a test directs, to look at the calls that a Player makes of frames.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/frames/audio_frames.h"
#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/results.h"

namespace test {

/** Tells a CallFilter what to do; the test sets it. */
struct CallPlan {
    int gives_up = -1;  // number of the call
    bool is_stuck = false;
    bool passes_on = false;    // calls come out untouched
    int pulls_to_refuse = 0;   // as if the filter were still busy
    std::vector<int> lengths;  // of the calls that it took, except the player's own
    std::vector<int64_t> times;
};

/** Inverts the samples of every call, in new buffers. It does not know how late it is. */
class CallFilter final : public Vorlin::IAudioFilter, public Vorlin::filterPrototype {
  public:
    /** Makes the prototype, which a player finds under "calls". `plan` must outlive every filter. */
    explicit CallFilter(CallPlan& plan) : plan_(plan) { addPrototype(this); }
    CallFilter(const Vorlin::IQFFrame::audioInfo& info, CallPlan& plan)
        : IAudioFilter(info, info, false), plan_(plan) {}

    bool setOption(const std::string&, const std::string&, const std::string&) override { return true; }
    bool init(uint64_t) override { return true; }
    int push(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (plan_.is_stuck) return Vorlin::kTryAgain;
        const AVFrame* in = avFrameOf(frame);
        if (in->ch_layout.nb_channels != 3) {
            plan_.lengths.push_back(in->nb_samples);
            plan_.times.push_back(in->pts);
            if (static_cast<int>(plan_.lengths.size()) - 1 == plan_.gives_up) {
                frame.reset();
                return 0;
            }
            if (!plan_.passes_on) invert(frame);
        }
        out_.push_back(std::move(frame));
        return 0;
    }
    int pull(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (plan_.pulls_to_refuse > 0) {
            --plan_.pulls_to_refuse;
            return Vorlin::kTryAgain;
        }
        if (out_.empty()) return Vorlin::kTryAgain;
        frame = std::move(out_.front());
        out_.pop_front();
        return 0;
    }
    void flush() override { out_.clear(); }
    std::string getName() override { return "CallFilter"; }
    bool is_supported(const std::string& name, int, int, int) override { return name == "calls"; }
    IAudioFilter* clone(Vorlin::IQFFrame::audioInfo info, Vorlin::IQFFrame::audioInfo, bool) override {
        return new CallFilter(info, plan_);
    }
    void setInvalid(bool) override {}
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override { return false; }
    void checkTimeConsume(uint64_t) override {}

  private:
    static void invert(const std::unique_ptr<Vorlin::IQFFrame>& frame) {
        AVFrame* samples = avFrameOf(frame);
        ASSERT_EQ(av_frame_make_writable(samples), 0);
        auto* values = reinterpret_cast<int16_t*>(samples->extended_data[0]);
        for (int i = 0; i < samples->nb_samples * samples->ch_layout.nb_channels; ++i)
            values[i] = static_cast<int16_t>(-values[i]);
    }

    CallPlan& plan_;
    std::deque<std::unique_ptr<Vorlin::IQFFrame>> out_;
};

}  // namespace test
