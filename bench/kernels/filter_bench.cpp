// Cost of the whole filter per frame of 1024: queues, conversion to 16 bits, effect, conversion back. The
// filter is inactive, so `push` does the work on the caller's thread. "bypassed" is the cost of the queues
// alone.
#include <benchmark/benchmark.h>

#include "SonivexFilter.h"
#include "run_benchmarks.h"
#include "support/frames/audio_frames.h"

namespace {

constexpr int kFrames = 1024;
constexpr int kRate_hz = 48000;
constexpr int kVariety = 16;  // frames of different noise

void filterFrame(benchmark::State& state, AVSampleFormat format, int channels, const std::string& effect) {
    const bool is_bypassed = effect == "bypassed";
    Vorlin::sonivexFilter filter({}, {}, false);
    filter.init(0);
    filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_)" + effect + R"(": true})", "");
    filter.setInvalid(is_bypassed);

    std::vector<std::unique_ptr<Vorlin::AVQFFrame>> material;
    for (uint32_t seed = 0; seed < kVariety; ++seed) {
        const test::FrameSpec spec{
            .format = format, .channels = channels, .rate_hz = kRate_hz, .frames = kFrames};
        material.push_back(test::makeFrame(spec, test::noiseSource(seed, 3000)));
    }
    std::size_t next = 0;
    for (auto _ : state) {
        // Pushes a new reference to the same samples, as a decoder does with frames that it may still need.
        std::unique_ptr<Vorlin::IQFFrame> frame =
            std::make_unique<Vorlin::AVQFFrame>(av_frame_clone(*material[next++ % material.size()]));
        filter.push(frame, 0);
        std::unique_ptr<Vorlin::IQFFrame> out;
        if (filter.pull(out, 0) != 0) state.SkipWithError("the filter returned no frame");
        benchmark::DoNotOptimize(out);
    }
    const double audio_s = static_cast<double>(state.iterations()) * kFrames / kRate_hz;
    state.counters["x_real_time"] = benchmark::Counter(audio_s, benchmark::Counter::kIsRate);
}

void registerAll() {
    for (const char* const effect : {"normalizer", "surround", "bypassed"}) {
        for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP}) {
            for (const int channels : {1, 2, 6, 8}) {
                const std::string name = std::string("filter/") + effect + "/" +
                                         av_get_sample_fmt_name(format) + "/" + std::to_string(channels);
                benchmark::RegisterBenchmark(name.c_str(), filterFrame, format, channels, effect);
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    return runBenchmarks(argc, argv);
}
