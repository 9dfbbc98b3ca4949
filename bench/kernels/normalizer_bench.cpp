// Cost of the normalizer by channel count, and of the output limiter alone.
//
//   ns/frame     processor time per frame (one sample of every channel)
//   x_realtime   duration of a frame at 48 kHz / ns/frame
//   worst_us     wall-clock time of the slowest call
//   deadline_us  duration of a call's frames, the most that a call may take
//
// Standard output carries only the results.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "au2_limiter_owner.h"
#include "sonivex/normalizer.h"
#include "support/signals/signals.h"
#include "thread_time.h"

namespace {

constexpr double kRateHz = 48000;
constexpr int kCallFrames = 1024;
constexpr int kCalls = 64;

// A new mixer prints its version to standard output; here the line goes to standard error.
void* createNormalizer(int channels) {
    std::fflush(stdout);
    const int results = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    void* const handle = aem_CreateNormalizer(channels, static_cast<int>(kRateHz));
    std::fflush(stdout);
    dup2(results, STDOUT_FILENO);
    close(results);
    return handle;
}

// Runs `call(i)`, 0 <= i < kCalls, each on its part of a repeating signal, and reports the cost per frame.
template <typename Call>
void measure(benchmark::State& state, int frames_per_call, Call call) {
    using Clock = std::chrono::steady_clock;
    for (int i = 0; i < kCalls; ++i) call(i);  // warms caches and gets past the initial silence
    const double cpu_s_before = threadCpuSeconds();
    double worst_us = 0;
    int i = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        call(i);
        const std::chrono::duration<double, std::micro> elapsed = Clock::now() - start;
        worst_us = std::max(worst_us, elapsed.count());
        i = (i + 1) % kCalls;
    }
    const double cpu_s = threadCpuSeconds() - cpu_s_before;
    const double frames = static_cast<double>(state.iterations()) * frames_per_call;
    state.counters["ns/frame"] = cpu_s * 1e9 / frames;
    state.counters["x_realtime"] = frames / kRateHz / cpu_s;
    state.counters["worst_us"] = worst_us;
    state.counters["deadline_us"] = frames_per_call / kRateHz * 1e6;
}

// Measures the normalizer on `in`: interleaved samples for kCalls calls.
void measureNormalizer(benchmark::State& state, int channels, const test::Pcm& in) {
    const auto call_samples = static_cast<std::size_t>(channels * kCallFrames);
    test::Pcm out(call_samples);
    void* const handle = createNormalizer(channels);
    measure(state, kCallFrames, [&](int i) {
        const short* const call_in = in.data() + static_cast<std::size_t>(i) * call_samples;
        aem_ProcessNormalizer(handle, call_in, out.data(), kCallFrames, channels);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    });
    aem_ReleaseNormalizer(handle);
}

// Keeps the limiters busy: loud bursts, after which the normalizer's gain stays at 0 dB.
void Normalizer(benchmark::State& state) {
    const int channels = static_cast<int>(state.range(0));
    measureNormalizer(state, channels, test::bursts(1, channels * kCallFrames * kCalls));
}
BENCHMARK(Normalizer)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6)->Arg(8);

// The usual programme: peaks at -1 dBFS, below the ceiling.
void NormalizerBelowCeiling(benchmark::State& state) {
    constexpr int kPeak = 29204;
    const int channels = static_cast<int>(state.range(0));
    measureNormalizer(state, channels, test::noise(1, channels * kCallFrames * kCalls, kPeak));
}
BENCHMARK(NormalizerBelowCeiling)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6)->Arg(8);

// Stereo blocks as in surround. Scale 1 stays mostly below the ceiling, 3 keeps the limiter engaged.
void OutputLimiter(benchmark::State& state) {
    constexpr int kFrames = 240;
    constexpr int kSamples = 2 * kFrames;
    const auto scale = static_cast<float>(state.range(0));
    const std::vector<float> in = test::noiseFloats(2, kSamples * kCalls, 30000.0F * scale);
    std::vector<float> out(kSamples);
    const auto limiter = sonivex::makeAu2Limiter();
    measure(state, kFrames, [&](int i) {
        au2_limiter_proc(limiter.get(), in.data() + static_cast<std::size_t>(i) * kSamples, kSamples,
                         out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    });
}
BENCHMARK(OutputLimiter)->ArgName("scale")->Arg(1)->Arg(3);

}  // namespace

BENCHMARK_MAIN();
