// The player with frames of different lengths: how fast a stream goes through, how late its sound is, and
// whether its end comes out. "as_they_come" passes every frame to the filter as it is (call_frames 0, times
// not corrected); "joined" has the player's default settings. The frames are those of Opus (2.5 ms), AAC and
// FLAC.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <optional>

#include "run_benchmarks.h"
#include "support/frames/audio_frames.h"
#include "vorlin/player.h"

namespace {

constexpr int kRate_hz = 48000;
constexpr int kStream_frames = 4608 * 40;  // 3.84 s
constexpr int kBurst_frames = 960;

// A burst of noise at the beginning, another one at the end, and silence in between.
std::vector<std::unique_ptr<Vorlin::AVQFFrame>> makeStream(int frame_length) {
    const auto noise = test::noiseSource(1, 3000);
    std::vector<std::unique_ptr<Vorlin::AVQFFrame>> stream;
    for (int first = 0; first < kStream_frames; first += frame_length) {
        const test::FrameSpec spec{.rate_hz = kRate_hz,
                                   .frames = std::min(frame_length, kStream_frames - first)};
        stream.push_back(test::makeFrame(spec, [&](int frame, int channel) {
            const int at = first + frame;
            const bool sounds = at < kBurst_frames || at >= kStream_frames - kBurst_frames;
            return sounds ? noise(at, channel) : int16_t{0};
        }));
        AVFrame* samples = *stream.back();
        samples->pts = first;
    }
    return stream;
}

struct Heard {
    std::optional<int64_t> first;  // time of the first sample that is not silent
    bool has_end = false;          // a sample of the second half of the stream is not silent
};

void listen(Heard& heard, const AVFrame& frame) {
    const auto* samples = reinterpret_cast<const int16_t*>(frame.extended_data[0]);
    const int64_t count = int64_t{frame.nb_samples} * frame.ch_layout.nb_channels;
    const auto* sound = std::find_if(samples, samples + count, [](int16_t sample) { return sample != 0; });
    if (sound == samples + count) return;
    if (!heard.first) heard.first = frame.pts + (sound - samples) / frame.ch_layout.nb_channels;
    heard.has_end = heard.has_end || frame.pts > kStream_frames / 2;
}

void playStream(benchmark::State& state, const std::string& effect, int frame_length, bool joins,
                bool active) {
    const auto stream = makeStream(frame_length);
    Heard heard;
    for (auto _ : state) {
        heard = {};
        Vorlin::PlayerConfig config{.active = active, .time_base = {1, kRate_hz}};
        if (!joins) {
            config.call_frames = 0;
            config.corrects_times = false;
        }
        const auto player = Vorlin::Player::create(
            nullptr, config,
            [&heard](std::unique_ptr<Vorlin::IQFFrame> frame) { listen(heard, *test::avFrameOf(frame)); });
        player->setOptions(R"({"enable_)" + effect + R"(": true})");
        // Pushes a new reference to the same samples, as a decoder does with frames that it may still need.
        for (const auto& frame : stream) {
            if (player->push(std::make_unique<Vorlin::AVQFFrame>(av_frame_clone(*frame))) != 0)
                state.SkipWithError("the player took no frame");
        }
        if (player->drain() != 0) state.SkipWithError("the stream did not come out");
    }
    const double audio_s = static_cast<double>(state.iterations()) * kStream_frames / kRate_hz;
    state.counters["x_real_time"] = benchmark::Counter(audio_s, benchmark::Counter::kIsRate);
    state.counters["late_ms"] = static_cast<double>(heard.first.value_or(-1)) * 1000.0 / kRate_hz;
    state.counters["has_end"] = heard.has_end ? 1 : 0;
}

void registerAll() {
    for (const char* const effect : {"normalizer", "dialoguenhance", "surround"}) {
        for (const int length : {120, 1024, 4608}) {
            for (const bool joins : {false, true}) {
                for (const bool active : {true, false}) {
                    const std::string name = std::string("player/") + effect + "/" + std::to_string(length) +
                                             (joins ? "/joined" : "/as_they_come") +
                                             (active ? "/worker" : "/inside_push");
                    benchmark::RegisterBenchmark(name.c_str(), playStream, effect, length, joins, active)
                        ->UseRealTime()
                        ->Unit(benchmark::kMillisecond);
                }
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    return runBenchmarks(argc, argv);
}
