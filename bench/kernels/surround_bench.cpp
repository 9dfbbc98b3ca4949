// Cost of surround by layout and type, and of its kernels.
//
//   cpu_ms/s                   processor time per second of audio at 48 kHz
//   p50_us, p99_us, worst_us   wall-clock time of one call; the deadline for 240 frames is 5000 us
//   heap_KiB                   memory of a handle: allocated, including the allocator's overhead, and mapped
//
// The kernels run once for each set of vector instructions of this machine.
//
// Standard output carries only the results.
#include "vector_targets.h"
// vector_targets.h comes first, so that Highway sees the library's targets.
#include <benchmark/benchmark.h>
#include <hwy/targets.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "arena.h"
#include "audiofft.h"
#include "bank_arithmetic.h"
#include "buffer.h"
#include "lane_transform.h"
#include "sonivex/surround.h"
#include "spectrum_arithmetic.h"
#include "support/memory/heap_bytes.h"
#include "support/signals/signals.h"
#include "thread_time.h"

namespace {

constexpr double kRateHz = 48000;
constexpr int kCallFrames = 240;
constexpr int kCalls = 200;  // length of the signal, one second in calls of 240 frames; it repeats

double percentile(std::vector<double>& values, double fraction) {
    const auto place = static_cast<std::ptrdiff_t>(fraction * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

// Processes noise with the limiter on.
void Surround(benchmark::State& state) {
    const int channels = static_cast<int>(state.range(0));
    const int frames = static_cast<int>(state.range(2));
    const int width = std::max(channels, 2);
    const auto call_samples = static_cast<std::size_t>(width * frames);
    const test::Pcm in = test::noise(1, width * frames * kCalls, 8000);
    test::Pcm out(static_cast<std::size_t>(2 * frames));

    const std::size_t heap_before = test::heapBytes();
    void* const handle =
        aem_CreateSurround(channels, static_cast<int>(kRateHz), static_cast<int>(state.range(1)), 1, 1);
    const std::size_t heap = test::heapBytes() - heap_before;

    using Clock = std::chrono::steady_clock;
    std::vector<double> calls_us;
    calls_us.reserve(1U << 20);
    double cpu_s = 0;
    std::size_t i = 0;
    const auto call = [&] {
        aem_ProcessSurround(handle, in.data() + i * call_samples, out.data(), frames);
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

    const double audio_s = static_cast<double>(state.iterations()) * frames / kRateHz;
    state.counters["cpu_ms/s"] = cpu_s * 1e3 / audio_s;
    state.counters["worst_us"] = *std::max_element(calls_us.begin(), calls_us.end());
    state.counters["p50_us"] = percentile(calls_us, 0.50);
    state.counters["p99_us"] = percentile(calls_us, 0.99);
    state.counters["heap_KiB"] = static_cast<double>(heap) / 1024;
}
BENCHMARK(Surround)
    ->ArgNames({"channels", "type", "frames"})
    ->ArgsProduct({{2, 6, 8}, {1, 13}, {kCallFrames, 1024}})
    ->MinTime(1);

// Times creation; the clock stops during release.
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

void ForwardTransform(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    audiofft::AudioFFT fft;
    fft.init(length);
    const std::vector<float> x = test::noiseFloats(1, length);
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
    const std::vector<float> re = test::noiseFloats(2, length / 2 + 1);
    const std::vector<float> im = test::noiseFloats(3, length / 2 + 1);
    std::vector<float> y(length);
    for (auto _ : state) {
        fft.ifft(y.data(), re.data(), im.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(InverseTransform)->ArgName("points")->Arg(512)->Arg(32768);

// One product of spectra of 257 bins per iteration, cycling through `pairs` of them, which lie scattered in
// memory as in a handle.
void SpectrumArithmetic(benchmark::State& state) {
    constexpr std::size_t kBins = 257;
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<std::unique_ptr<fftconvolver::SplitComplex>> spectra;
    for (std::size_t i = 0; i < 2 * count; ++i) {
        spectra.push_back(std::make_unique<fftconvolver::SplitComplex>(kBins));
        const std::vector<float> numbers = test::noiseFloats(i, kBins);
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

// Restricts the kernels to one set of vector instructions for its lifetime.
class AtTarget {
  public:
    AtTarget(benchmark::State& state, std::int64_t target) {
        dispatchTo(target);
        state.SetLabel(hwy::TargetName(target));
    }
    ~AtTarget() { dispatchTo(0); }
    AtTarget(const AtTarget&) = delete;
    AtTarget& operator=(const AtTarget&) = delete;

  private:
    static void dispatchTo(std::int64_t target) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
};

// Transforms of 512 points that a bank of two channels and both ears needs for two blocks: 4 lanes forward,
// 8 back.
void LaneTransform(benchmark::State& state, std::int64_t target, bool is_forward) {
    const AtTarget at_target(state, target);
    constexpr std::size_t kBlock = 256;
    const std::size_t lanes = is_forward ? 4 : 8;
    const sonivex::TransformTables tables(2 * kBlock);
    const std::vector<float> frames = test::noiseFloats(4, kBlock * lanes);
    std::vector<float> spectra = test::noiseFloats(5, 2 * kBlock * lanes);
    std::vector<float> out(2 * kBlock * lanes);
    fftconvolver::Buffer<double> work;
    work.resizeOrThrow(2 * kBlock * lanes);
    const sonivex::LaneTransform& transform = sonivex::laneTransform();
    float* const im = spectra.data() + kBlock * lanes;
    for (auto _ : state) {
        if (is_forward) {
            transform.forward(tables, frames.data(), lanes, spectra.data(), im, work.data());
        } else {
            transform.inverse(tables, spectra.data(), im, lanes, out.data(), work.data());
        }
        benchmark::ClobberMemory();
    }
}

// Sums of all banks of a layout, with stereo's 49 or 7.1's 34 partitions, in calls of 240 frames: for one
// call, which begins one block, or for two calls together, which begin two. That time covers both calls.
void BankArithmetic(benchmark::State& state, std::int64_t target, std::size_t banks, std::size_t partitions,
                    std::size_t calls) {
    const AtTarget at_target(state, target);
    constexpr std::size_t kTiles = 512 / sonivex::kTileFloats;
    constexpr std::size_t kTileFloats = sonivex::kTileSpectrumFloats;
    const std::size_t bank_floats = kTiles * ((partitions - 1) + 2 * partitions + 2) * kTileFloats;
    sonivex::Arena arena(sonivex::Arena::bytesOf<float>(banks * bank_floats + 6 * 4096));
    std::vector<sonivex::BankMemory> memory;
    for (std::size_t bank = 0; bank < banks; ++bank) {
        float* const inputs = arena.take<float>(kTiles * (partitions - 1) * kTileFloats);
        float* const responses = arena.take<float>(kTiles * partitions * 2 * kTileFloats);
        float* const accumulated = arena.take<float>(kTiles * 2 * kTileFloats);
        std::fill_n(inputs, kTiles * (partitions - 1) * kTileFloats, 0.5F);
        std::fill_n(responses, kTiles * partitions * 2 * kTileFloats, 0.25F);
        memory.push_back({inputs, responses, accumulated, kTiles, partitions, 2, 2, false});
    }
    float* const in = arena.take<float>(2 * 2048);
    float* const out = arena.take<float>(4 * 2048);
    const sonivex::LanePlanes planes[] = {{out, out + 2048}, {out + 4096, out + 6144}};
    std::size_t newest = 0;
    for (auto _ : state) {
        sonivex::Steps steps(256, 100, 240, calls);
        const sonivex::Step step = steps.next();
        for (const sonivex::BankMemory& bank : memory) {
            sonivex::bankArithmetic().render(bank, sonivex::Ears::kRows, newest, step, {in, in + 2048},
                                             planes);
        }
        for (std::size_t i = 0; i < step.finishedBlocks(); ++i) {
            newest = sonivex::slotOfNextBlock(newest, partitions - 1);
        }
        benchmark::ClobberMemory();
    }
}

// Processes noise in calls of 240 frames, type 1.
void SurroundAtTarget(benchmark::State& state, std::int64_t target, int channels) {
    const AtTarget at_target(state, target);
    const test::Pcm in = test::noise(1, channels * kCallFrames * kCalls, 8000);
    test::Pcm out(2 * kCallFrames);
    void* const handle = aem_CreateSurround(channels, static_cast<int>(kRateHz), 1, 1, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        aem_ProcessSurround(handle, in.data() + i * static_cast<std::size_t>(channels * kCallFrames),
                            out.data(), kCallFrames);
        benchmark::ClobberMemory();
        i = (i + 1) % kCalls;
    }
    aem_ReleaseSurround(handle);
}

void registerForEveryTarget() {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        const std::string name = std::string("/") + hwy::TargetName(target);
        benchmark::RegisterBenchmark(("LaneTransform/forward" + name).c_str(), LaneTransform, target, true);
        benchmark::RegisterBenchmark(("LaneTransform/inverse" + name).c_str(), LaneTransform, target, false);
        for (const std::size_t calls : {1U, 2U}) {
            const std::string of_calls = (calls == 1 ? "/one_call" : "/two_calls") + name;
            benchmark::RegisterBenchmark(("BankArithmetic/stereo" + of_calls).c_str(), BankArithmetic, target,
                                         1U, 49U, calls);
            benchmark::RegisterBenchmark(("BankArithmetic/7.1" + of_calls).c_str(), BankArithmetic, target,
                                         4U, 34U, calls);
        }
        benchmark::RegisterBenchmark(("SurroundAtTarget/stereo" + name).c_str(), SurroundAtTarget, target, 2);
        benchmark::RegisterBenchmark(("SurroundAtTarget/7.1" + name).c_str(), SurroundAtTarget, target, 8);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    registerForEveryTarget();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
