#include "player_glue.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <stdexcept>
#include <string>

#include "support/frames/audio_frames.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/log.h"
#include "vorlin/plugin.h"

namespace {

using Vorlin::filterPrototype;
using Vorlin::IQFFrame;

constexpr int kFrames = 6;  // for one life
constexpr int kFrame_frames = 512;
constexpr int kReports = 80;  // more than the load guard's queue keeps in one piece of memory

const std::string kNothing;
const std::string kOptionKey = filterPrototype::FILTER_OPTION;
const std::string kRateKey = filterPrototype::VIDEO_FPS_OPTION;
const std::string kHugeRate = "1e400";
const std::string kUsualRate = "25";
const std::string kNoRate = "fast";
const std::string kTarget = "the name of a target that is too long to be kept without memory";
const std::string kOptions = R"({"enable_normalizer": true})";

std::shared_ptr<Vorlin::Plugin> library;
std::unique_ptr<Vorlin::IAudioFilter> filter;
std::deque<std::unique_ptr<IQFFrame>> frames;
std::atomic<int> lost_frames = 0;
std::atomic<int> announced_frames = 0;

/** A frame that notices when the filter destroys it. */
class WatchedFrame final : public Vorlin::AVQFFrame {
  public:
    using AVQFFrame::AVQFFrame;
    ~WatchedFrame() override {
        if (!has_come_out_) ++lost_frames;
    }
    void comeOut() { has_come_out_ = true; }

  private:
    bool has_come_out_ = false;
};

int prepare(const char* plugin) {
    std::string error;
    library = Vorlin::Plugin::load(plugin, error);
    if (library == nullptr) return -1;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        const auto made = test::makeFrame({.frames = kFrame_frames}, test::noiseSource(i, 3000));
        frames.push_back(std::make_unique<WatchedFrame>(av_frame_clone(*made)));
    }
    Vorlin::setLogSink([](int, const std::string&, const std::string& line) {
        if (line.find("lost") != std::string::npos || line.find("failed!") != std::string::npos ||
            line.find("error") != std::string::npos) {
            ++announced_frames;
        }
    });
    Vorlin::setLogLevel(Vorlin::LOG_WARNING);
    return 0;
}

int make(int has_worker) {
    filter = filterPrototype::createFilter("sonivex", {}, {}, has_worker != 0);
    return filter != nullptr ? 0 : -1;
}

// Makes every call of a player that asks for memory, but those for frames. @return whether the filter refused
// a rate that is no number.
bool report() {
    filter->setCurrentTarget(kTarget);
    if (!filter->setOption(kRateKey, kHugeRate, kNothing)) return false;
    if (!filter->setOption(kRateKey, kUsualRate, kNothing)) return false;
    for (int i = 0; i < kReports; ++i) filter->checkTimeConsume(0);
    try {
        return !filter->setOption(kRateKey, kNoRate, kNothing);
    } catch (const std::invalid_argument&) {
        return true;
    }
}

int start() {
    if (!filter->init(0)) return -1;
    const bool is_set = filter->setOption(kOptionKey, kOptions, kNothing);
    filter->setInvalid(false);
    if (!report()) return 1;
    return is_set ? 0 : -1;
}

int push() {
    const int result = filter->push(frames.front(), 0);
    if (result == 0) frames.pop_front();
    return result;
}

int pull() {
    std::unique_ptr<IQFFrame> frame;
    if (filter->pull(frame, 0) != 0) return 0;
    dynamic_cast<WatchedFrame&>(*frame).comeOut();
    const AVFrame* const samples = test::avFrameOf(frame);
    return samples != nullptr && samples->nb_samples == kFrame_frames && samples->format == AV_SAMPLE_FMT_S16
               ? 1
               : -1;
}

}  // namespace

extern "C" {
extern const PlayerGlue player_glue __attribute__((visibility("default")));
}
const PlayerGlue player_glue = {.prepare = prepare,
                                .make = make,
                                .isMade = [] { return filter != nullptr ? 1 : 0; },
                                .start = start,
                                .push = push,
                                .pull = pull,
                                .lost = [] { return lost_frames.load(); },
                                .announced = [] { return announced_frames.load(); },
                                .end = [] { filter.reset(); }};
