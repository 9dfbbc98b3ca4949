// Runs the functions of docs/embedding.md. The snippets are compiled with this file, in front of it.
//
// Usage: PROGRAM PLUGIN    exit code 0: the stream came out with the effect, and errors are reported

#include <cstdint>
#include <cstdio>

#include "vorlin/av_compat.h"
#include "vorlin/filter_prototype.h"

namespace {

constexpr int kRate_hz = 48000;
constexpr int kOpusFrame = 120;  // 2.5 ms
constexpr int kFrames = 400;
constexpr int kLength = kOpusFrame * kFrames;
constexpr int kTail = 13000;

/** Makes a second of a buzz in frames of 2.5 ms. */
class Buzz {
  public:
    Vorlin::OwnedAVFrame next() {
        if (made_ == kFrames) return nullptr;
        Vorlin::OwnedAVFrame frame(av_frame_alloc());
        frame->format = AV_SAMPLE_FMT_FLT;
        frame->sample_rate = kRate_hz;
        frame->nb_samples = kOpusFrame;
        if (Vorlin::av::setFrameDefaultLayout(frame.get(), 2) < 0 || av_frame_get_buffer(frame.get(), 0) < 0)
            return nullptr;
        frame->pts = int64_t{made_} * kOpusFrame;
        auto* samples = reinterpret_cast<float*>(frame->data[0]);
        for (int i = 0; i < 2 * kOpusFrame; ++i) samples[i] = i % 90 < 45 ? 0.2F : -0.2F;
        ++made_;
        return frame;
    }

  private:
    int made_ = 0;
};

bool fail(const char* what) {
    std::printf("%s\n", what);
    return false;
}

bool playsAndReportsErrors(const std::string& plugin) {
    Buzz buzz;
    int64_t next = 0;
    bool has_gap = false;
    bool is_silent = true;
    const auto decode = [&buzz] { return buzz.next(); };
    const auto play = [&](const AVFrame& frame) {
        has_gap = has_gap || frame.pts != next;
        next += frame.nb_samples;
        const auto* samples = reinterpret_cast<const float*>(frame.extended_data[0]);
        for (int i = 0; i < 2 * frame.nb_samples; ++i) is_silent = is_silent && samples[i] == 0.0F;
    };
    if (!playWithEffect(plugin, decode, AVRational{1, kRate_hz}, play)) return fail("the function failed");
    if (has_gap) return fail("the times have gaps");
    if (is_silent) return fail("nothing is to be heard");
    if (next != kLength + kTail) return fail("the length is wrong");
    if (playWithEffect("no-such-library.so", decode, AVRational{1, kRate_hz}, play))
        return fail("a missing library is not reported");
    return true;
}

// The delays are those of the page's table and of its examples.
bool tellsTheDelay(const std::string& library) {
    std::string error;
    const auto plugin = Vorlin::Plugin::load(library, error);
    if (!plugin) return fail(error.c_str());
    const Vorlin::IQFFrame::audioInfo stereo{.format = 1, .channels = 2, .sample_rate = kRate_hz};
    const auto filter = Vorlin::filterPrototype::createFilter("sonivex", stereo, stereo, false);
    if (!filter) return fail("there is no filter");
    const auto is_late = [&](const char* options, int call_frames, int64_t frames) {
        return filter->setOption(Vorlin::filterPrototype::FILTER_OPTION, options, "") &&
               delayInCalls(*filter, stereo, call_frames) == frames;
    };
    constexpr char kSurround[] = R"({"enable_surround": true})";
    constexpr char kDialogue[] = R"({"enable_dialoguenhance": true})";
    if (!is_late("{}", 1024, 0)) return fail("no effect has a delay");
    if (!is_late(kSurround, 480, 0) || !is_late(kSurround, 120, 120) || !is_late(kSurround, 4608, 4608))
        return fail("the delay of surround is wrong");
    if (!is_late(kDialogue, 1024, 1536) || !is_late(kDialogue, 128, 1536 + 512 - 128))
        return fail("the delay of dialogue enhancement is wrong");
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    return argc == 2 && playsAndReportsErrors(argv[1]) && tellsTheDelay(argv[1]) ? 0 : 1;
}
