// A filter library whose load guard finds the filter too slow after one and a half seconds of audio. Until
// then the filter turns the sign of every sample, so that one hears whether it works.
#include <memory>
#include <string>

#include "vorlin/av_frame.h"
#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/results.h"

namespace {

constexpr char kName[] = "sonivex";
constexpr int kEventCode = 0;
constexpr int64_t kUntilOverload_frames = 72000;

class LateOverload final : public Vorlin::IAudioFilter, public Vorlin::filterPrototype {
  public:
    LateOverload() { addPrototype(this); }
    LateOverload(const Vorlin::IQFFrame::audioInfo& src, const Vorlin::IQFFrame::audioInfo& dst, bool active)
        : IAudioFilter(src, dst, active) {}

    bool setOption(const std::string&, const std::string&, const std::string&) override { return true; }
    bool init(uint64_t) override { return true; }
    int push(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (held_) return Vorlin::kTryAgain;
        held_ = std::move(frame);
        auto* audio = dynamic_cast<Vorlin::AVQFFrame*>(held_.get());
        AVFrame* samples = audio != nullptr ? static_cast<AVFrame*>(*audio) : nullptr;
        if (samples == nullptr) return Vorlin::kSuccess;
        if (!is_invalid_) {
            auto* values = reinterpret_cast<int16_t*>(samples->data[0]);
            const int count = samples->nb_samples * samples->ch_layout.nb_channels;
            for (int i = 0; i < count; ++i) values[i] = static_cast<int16_t>(-values[i]);
        }
        frames_ += samples->nb_samples;
        return Vorlin::kSuccess;
    }
    int pull(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (!held_) return Vorlin::kTryAgain;
        frame = std::move(held_);
        return Vorlin::kSuccess;
    }
    void flush() override { held_.reset(); }
    std::string getName() override { return kName; }
    bool is_supported(const std::string& name, int, int, int) override { return name == kName; }
    IAudioFilter* clone(Vorlin::IQFFrame::audioInfo src, Vorlin::IQFFrame::audioInfo dst,
                        bool active) override {
        return new LateOverload(src, dst, active);
    }
    void setInvalid(bool invalid) override { is_invalid_ = invalid; }
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override { return false; }
    void checkTimeConsume(uint64_t) override {
        if (frames_ >= kUntilOverload_frames)
            mEventCallback(kEventCode, std::string(kName) + ":" + FILTER_INVALID_PERFORMANCE);
    }

  private:
    std::unique_ptr<Vorlin::IQFFrame> held_;
    int64_t frames_ = 0;
    bool is_invalid_ = false;
};

LateOverload prototype;

}  // namespace

// By these names the command line knows which effects a plug-in has.
extern "C" VORLIN_API void aem_CreateNormalizer() {}
