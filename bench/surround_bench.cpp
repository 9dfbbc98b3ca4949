/* Cost of surround per layout and type, and of what it is made of.
 *
 *   cpu_ms/s   processor time per second of audio at 48 kHz
 *   p50_us, p99_us, worst_us   one call of 240 frames by the clock on the wall; the deadline is 5000 us
 *   heap_KiB   what a handle takes from the allocator, with its overhead
 *
 * Standard output holds the results alone. */
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

#include "audiofft.h"
#include "buffer.h"
#include "sonivex/surround.h"
#include "spectrum_arithmetic.h"
#include "support/signals.h"

namespace {

constexpr double kRateHz = 48000;
constexpr int kCallFrames = 240;
constexpr int kCalls = 200;  // a second, then again from the start

double threadCpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::size_t heapBytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

double percentile(std::vector<double>& values, double fraction) {
    const auto place = static_cast<std::ptrdiff_t>(fraction * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

/* Calls of 240 frames of noise, limiter on. */
void Surround(benchmark::State& state) {
    const int channels = static_cast<int>(state.range(0));
    const int width = std::max(channels, 2);
    const auto call_samples = static_cast<std::size_t>(width * kCallFrames);
    const test::Pcm in = test::noise(1, width * kCallFrames * kCalls, 8000);
    test::Pcm out(2 * kCallFrames);

    const std::size_t heap_before = heapBytes();
    void* const handle =
        aem_CreateSurround(channels, static_cast<int>(kRateHz), static_cast<int>(state.range(1)), 1, 1);
    const std::size_t heap = heapBytes() - heap_before;

    using Clock = std::chrono::steady_clock;
    std::vector<double> calls_us;
    calls_us.reserve(1U << 20);
    double cpu_s = 0;
    std::size_t i = 0;
    const auto call = [&] {
        aem_ProcessSurround(handle, in.data() + i * call_samples, out.data(), kCallFrames);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
        i = (i + 1) % kCalls;
    };
    for (int warm = 0; warm < kCalls; ++warm) call();
    const double cpu_before_s = threadCpuSeconds();
    for (auto _ : state) {
        const auto start = Clock::now();
        call();
        calls_us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    cpu_s = threadCpuSeconds() - cpu_before_s;
    aem_ReleaseSurround(handle);

    const double audio_s = static_cast<double>(state.iterations()) * kCallFrames / kRateHz;
    state.counters["cpu_ms/s"] = cpu_s * 1e3 / audio_s;
    state.counters["worst_us"] = *std::max_element(calls_us.begin(), calls_us.end());
    state.counters["p50_us"] = percentile(calls_us, 0.50);
    state.counters["p99_us"] = percentile(calls_us, 0.99);
    state.counters["heap_KiB"] = static_cast<double>(heap) / 1024;
}
BENCHMARK(Surround)->ArgNames({"channels", "type"})->ArgsProduct({{2, 6, 8}, {1, 13}})->MinTime(1);

/* Creation, and release with the clock stopped. */
void SurroundSetUp(benchmark::State& state) {
    for (auto _ : state) {
        void* const handle = aem_CreateSurround(static_cast<int>(state.range(0)), static_cast<int>(kRateHz),
                                                static_cast<int>(state.range(1)), 1, 1);
        state.PauseTiming();
        aem_ReleaseSurround(handle);
        state.ResumeTiming();
    }
}
BENCHMARK(SurroundSetUp)
    ->ArgNames({"channels", "type"})
    ->ArgsProduct({{2, 6, 8}, {1, 13}})
    ->Unit(benchmark::kMillisecond);

std::vector<float> floats(std::uint64_t seed, std::size_t count) {
    std::vector<float> numbers;
    for (const std::int16_t sample : test::noise(seed, static_cast<int>(count), 32767)) {
        numbers.push_back(static_cast<float>(sample) / 32768.0F);
    }
    return numbers;
}

void ForwardTransform(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    audiofft::AudioFFT fft;
    fft.init(length);
    const std::vector<float> x = floats(1, length);
    std::vector<float> re(length / 2 + 1);
    std::vector<float> im(length / 2 + 1);
    for (auto _ : state) {
        fft.fft(x.data(), re.data(), im.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(ForwardTransform)->ArgName("points")->Arg(512)->Arg(32768);

void InverseTransform(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    audiofft::AudioFFT fft;
    fft.init(length);
    const std::vector<float> re = floats(2, length / 2 + 1);
    const std::vector<float> im = floats(3, length / 2 + 1);
    std::vector<float> y(length);
    for (auto _ : state) {
        fft.ifft(y.data(), re.data(), im.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(InverseTransform)->ArgName("points")->Arg(512)->Arg(32768);

/* One product of spectra of 257 bins, out of so many that they are spread as in a handle. */
void SpectrumArithmetic(benchmark::State& state) {
    constexpr std::size_t kBins = 257;
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<std::unique_ptr<fftconvolver::SplitComplex>> spectra;
    for (std::size_t i = 0; i < 2 * count; ++i) {
        spectra.push_back(std::make_unique<fftconvolver::SplitComplex>(kBins));
        const std::vector<float> numbers = floats(i, kBins);
        std::copy(numbers.begin(), numbers.end(), spectra.back()->re());
        std::copy(numbers.rbegin(), numbers.rend(), spectra.back()->im());
    }
    fftconvolver::SplitComplex sum(kBins);
    std::size_t i = 0;
    for (auto _ : state) {
        if (i == 0) sum.clear();
        ComplexMultiplyAccumulate(sum, *spectra[2 * i], *spectra[2 * i + 1]);
        benchmark::ClobberMemory();
        i = i + 1 == count ? 0 : i + 1;
    }
}
BENCHMARK(SpectrumArithmetic)->ArgName("pairs")->Arg(1)->Arg(34)->Arg(544);

}  // namespace

BENCHMARK_MAIN();
