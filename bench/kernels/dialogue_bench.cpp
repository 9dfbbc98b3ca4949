// Cost of the dialogue enhancer, and of the four transforms and the limiter within it.
//
//   us/hop      processor time of one hop (a quarter of the transform length)
//   x_realtime  duration of a hop / us/hop
//   worst_us    wall-clock time of the slowest hop
//   heap_KiB    memory of a handle: allocated, including the allocator's overhead, and mapped
//
// Standard output carries only the results.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "au2_limiter_owner.h"
#include "av_array.h"
#include "real_transforms.h"
#include "sonivex/dialoguenhance.h"
#include "support/memory/heap_bytes.h"
#include "support/signals/signals.h"
#include "thread_time.h"

namespace {

constexpr int kHops = 128;  // length of the signal; it repeats

// Runs `hop(i)`, 0 <= i < kHops, and reports its cost.
template <typename Hop>
void measure(benchmark::State& state, Hop hop) {
    using Clock = std::chrono::steady_clock;
    for (int i = 0; i < kHops; ++i) hop(i);
    const double cpu_s_before = threadCpuSeconds();
    double worst_us = 0;
    int i = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        hop(i);
        benchmark::ClobberMemory();
        const std::chrono::duration<double, std::micro> elapsed = Clock::now() - start;
        worst_us = std::max(worst_us, elapsed.count());
        i = (i + 1) % kHops;
    }
    const double cpu_s = threadCpuSeconds() - cpu_s_before;
    state.counters["us/hop"] = cpu_s * 1e6 / static_cast<double>(state.iterations());
    state.counters["worst_us"] = worst_us;
}

// Partly correlated noise, so that the centre presence is above zero.
test::Pcm stereo(int frames) {
    test::Pcm left = test::noise(1, frames, 8000);
    test::Pcm right = test::noise(2, frames, 8000);
    for (std::size_t i = 0; i < left.size(); ++i) {
        right[i] = static_cast<std::int16_t>((3 * left[i] + right[i]) / 4);
    }
    return test::interleaved({left, right});
}

void Dialogue(benchmark::State& state) {
    const int rate_hz = static_cast<int>(state.range(0));
    const int hop = static_cast<int>(state.range(1));
    const test::Pcm in = stereo(hop * kHops);
    test::Pcm out(static_cast<std::size_t>(2 * hop));

    const std::size_t heap_before = test::heapBytes();
    void* const handle = aem_CreateDialoguEnhance(2, rate_hz, 1.0, 1.0, 1.0);
    state.counters["heap_KiB"] = static_cast<double>(test::heapBytes() - heap_before) / 1024;
    measure(state, [&](int i) {
        aem_ProcessDialoguEnhance(handle, in.data() + static_cast<std::ptrdiff_t>(2) * hop * i, out.data(),
                                  hop, rate_hz);
        benchmark::DoNotOptimize(out.data());
    });
    aem_ReleaseDialoguEnhance(handle);
    state.counters["x_realtime"] = 1e6 * hop / rate_hz / state.counters["us/hop"];
}
BENCHMARK(Dialogue)
    ->ArgNames({"rate_hz", "hop"})
    ->Args({48000, 512})
    ->Args({96000, 1024})
    ->Args({192000, 2048})
    ->MinTime(1);

// Lower bound of a hop's cost.
void FourTransforms(benchmark::State& state) {
    const int points = static_cast<int>(state.range(0));
    const int bins = points / 2 + 1;
    const std::vector<float> noise = test::noiseFloats(3, static_cast<std::size_t>(points), 0.6F);
    sonivex::AvArray<float> frames[2];
    sonivex::AvArray<sonivex::Bin> spectra[2];
    sonivex::ForwardTransform forward[2];
    sonivex::InverseTransform inverse[2];
    for (int channel = 0; channel < 2; ++channel) {
        sonivex::allocate(frames[channel], points);
        sonivex::allocate(spectra[channel], bins);
        forward[channel].init(points);
        inverse[channel].init(points);
        std::copy(noise.begin(), noise.end(), frames[channel].get());
    }
    measure(state, [&](int) {
        for (int channel = 0; channel < 2; ++channel) {
            forward[channel].run(frames[channel].get(), spectra[channel].get());
        }
        for (int channel = 0; channel < 2; ++channel) {
            inverse[channel].run(spectra[channel].get(), frames[channel].get());
        }
    });
}
BENCHMARK(FourTransforms)->ArgName("points")->Arg(2048)->Arg(4096)->Arg(8192)->MinTime(1);

// The output limiter on the samples of a hop, below its ceiling.
void Limiter(benchmark::State& state) {
    const int samples = 2 * static_cast<int>(state.range(0));
    const std::vector<float> in = test::noiseFloats(4, static_cast<std::size_t>(samples), 8000.0F);
    std::vector<float> out(in.size());
    const auto limiter = sonivex::makeAu2Limiter();
    measure(state, [&](int) {
        au2_limiter_proc(limiter.get(), in.data(), samples, out.data());
        benchmark::DoNotOptimize(out.data());
    });
}
BENCHMARK(Limiter)->ArgName("hop")->Arg(512);

}  // namespace

BENCHMARK_MAIN();
