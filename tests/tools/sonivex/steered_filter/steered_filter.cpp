// A filter library for tests of a whole render: it drops calls, becomes too slow, writes short dumps or does
// not begin where its input says so (steering.h). Its output shows where it was flushed.
#include <algorithm>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tools/sonivex/steered_filter/steering.h"
#include "vorlin/av_frame.h"
#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/global_settings.h"
#include "vorlin/results.h"

namespace {

constexpr char kName[] = "sonivex";
constexpr char kDumpFolderProperty[] = "protected.network.cache.local.saveDir";

class SteeredFilter final : public Vorlin::IAudioFilter, public Vorlin::filterPrototype {
  public:
    SteeredFilter() { addPrototype(this); }
    SteeredFilter(const Vorlin::IQFFrame::audioInfo& src, const Vorlin::IQFFrame::audioInfo& dst, bool active)
        : IAudioFilter(src, dst, active), rate_hz_(src.sample_rate) {}
    ~SteeredFilter() override {
        if (holder_of_only_place == this) holder_of_only_place = nullptr;
    }
    SteeredFilter(const SteeredFilter&) = delete;
    SteeredFilter& operator=(const SteeredFilter&) = delete;

    bool setOption(const std::string& key, const std::string& value, const std::string&) override {
        if (key == FILTER_OPTION) is_dumping_ = value.find(R"("enable_dump":true)") != std::string::npos;
        return rate_hz_ != test::kNoOptionsRate_hz;
    }
    bool init(uint64_t) override {
        if (rate_hz_ == test::kOneFilterRate_hz) return takeOnlyPlace();
        return rate_hz_ != test::kNoFilterRate_hz;
    }
    int push(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (held_) return Vorlin::kTryAgain;
        std::unique_ptr<Vorlin::IQFFrame> taken = std::move(frame);
        const auto* audio = dynamic_cast<const Vorlin::AVQFFrame*>(taken.get());
        if (is_invalid_ || audio == nullptr || isFence(*audio) || process(*audio)) held_ = std::move(taken);
        return Vorlin::kSuccess;
    }
    int pull(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (!held_) return Vorlin::kTryAgain;
        frame = std::move(held_);
        return Vorlin::kSuccess;
    }
    void flush() override {
        held_.reset();
        calls_ = 0;
    }
    std::string getName() override { return kName; }
    bool is_supported(const std::string& name, int, int, int) override { return name == kName; }
    IAudioFilter* clone(Vorlin::IQFFrame::audioInfo src, Vorlin::IQFFrame::audioInfo dst,
                        bool active) override {
        return new SteeredFilter(src, dst, active);
    }
    void setInvalid(bool invalid) override { is_invalid_ = invalid; }
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override { return false; }
    void checkTimeConsume(uint64_t) override {
        if (!is_too_slow_) return;
        is_too_slow_ = false;
        mEventCallback(0, std::string(kName) + ":" + FILTER_INVALID_PERFORMANCE);
    }

  private:
    bool takeOnlyPlace() {
        if (holder_of_only_place != nullptr) return false;
        holder_of_only_place = this;
        return true;
    }

    // The player waits for the end of its stream with frames of three channels.
    static bool isFence(const Vorlin::AVQFFrame& audio) {
        return static_cast<AVFrame*>(audio)->ch_layout.nb_channels == 3;
    }

    // @return false if the filter gives the call up.
    bool process(const Vorlin::AVQFFrame& audio) {
        AVFrame* frame = static_cast<AVFrame*>(audio);
        auto* samples = reinterpret_cast<int16_t*>(frame->data[0]);
        const int count = frame->nb_samples * frame->ch_layout.nb_channels;
        const int16_t steering = samples[0];
        ++calls_;
        if (steering == test::kDropCall) return false;
        if (steering == test::kNoMemory) throw std::bad_alloc();
        if (steering == test::kOverload) is_too_slow_ = true;
        const bool is_short = steering == test::kShortDump;
        dump("input", samples, count, is_short ? test::kMissingInput_bytes : 0);
        std::fill_n(samples, count, calls_);
        dump("output", samples, count, is_short ? test::kMissingOutput_bytes : 0);
        return true;
    }

    void dump(const std::string& stage, const int16_t* samples, int count, int missing_bytes) const {
        if (!is_dumping_) return;
        const std::string folder = Vorlin::globalSettings::GetInstance().getProperty(kDumpFolderProperty);
        std::ofstream file(folder + "/sonivex_normalizer_" + stage + "_12345678.pcm",
                           std::ios::binary | std::ios::app);
        file.write(reinterpret_cast<const char*>(samples),
                   count * std::streamsize{sizeof(int16_t)} - missing_bytes);
    }

    static inline SteeredFilter* holder_of_only_place = nullptr;

    std::unique_ptr<Vorlin::IQFFrame> held_;
    int rate_hz_ = 0;
    int16_t calls_ = 0;  // since the filter was made or flushed
    bool is_dumping_ = false;
    bool is_invalid_ = true;
    bool is_too_slow_ = false;
};

SteeredFilter prototype;

}  // namespace

// By this name the command line knows that a plug-in has the normalizer.
extern "C" VORLIN_API void aem_CreateNormalizer() {}
