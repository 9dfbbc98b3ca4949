#include "comparisons.h"

#include <algorithm>
#include <ctime>
#include <memory>
#include <optional>

#include "engines.h"
#include "machine.h"
#include "output_check.h"
#include "sonivex/surround.h"
#include "support/memory/heap_bytes.h"
#include "turns.h"

namespace compare {
namespace {

constexpr std::size_t kChannelCounts[] = {2, 6, 8};
constexpr std::size_t kSecond_frames = 48000;

struct MemoryBounds {
    Bounds heap_kib;
    Bounds resident_kib;
};

// Memory comes in pages, some of which may be huge; the floor of resident memory is a tenth above the goal.
MemoryBounds memoryBounds(double heap_floor_kib, double goal_kib) {
    return {atMost(heap_floor_kib, goal_kib), atMost(1.1 * goal_kib, goal_kib)};
}

// In the order of kChannelCounts.
const MemoryBounds kMemoryBounds[] = {memoryBounds(1250, 1199), memoryBounds(2150, 2017),
                                      memoryBounds(2750, 2599)};

double wall_us() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

void* createHandle(std::size_t channels, int type) {
    return aem_CreateSurround(static_cast<int>(channels), static_cast<int>(kRate_hz), type, kMode, 1);
}

// Resident memory of a handle that has processed a second of audio, in KiB: the growth of the process over
// several handles. The handles before them load code and tables and fill the gaps that the allocator could
// not return.
std::optional<double> residentHandle_kib(const Layout& layout) {
    constexpr std::size_t kHandlesBefore = 16;
    constexpr std::size_t kHandles = 8;
    const Material material = makeMaterial(layout.channels(), layout.channels(), kSecond_frames, 1);
    std::vector<std::unique_ptr<Engine>> engines;
    engines.reserve(kHandlesBefore + kHandles);
    const auto add_worn = [&](std::size_t count) {
        for (; count > 0; --count) {
            engines.push_back(makeOurEngine(layout, material, kShortCall_frames));
            Engine& engine = *engines.back();
            for (std::size_t frame = 0; frame < material.frames(); frame += engine.callFrames()) {
                engine.process(frame);
            }
        }
    };
    add_worn(kHandlesBefore);
    const std::optional<std::size_t> before = residentBytes();
    add_worn(kHandles);
    const std::optional<std::size_t> after = residentBytes();
    if (!before || !after) return {};
    return (static_cast<double>(*after) - static_cast<double>(*before)) / kHandles / 1024;
}

void measureHandle(Report& report, const Effort& effort, std::size_t channels, int type,
                   const MemoryBounds& bounds) {
    const Layout layout = makeLayout(channels, type);
    const std::string subject = layout.name + " type " + std::to_string(type);
    const std::size_t before = test::heapBytes();
    void* const handle = createHandle(channels, type);
    const std::size_t heap = test::heapBytes() - before;
    aem_ReleaseSurround(handle);
    report.row("heap of a handle", subject, static_cast<double>(heap) / 1024, "KiB", bounds.heap_kib);
    if (const std::optional<double> resident_kib = residentHandle_kib(layout)) {
        report.row("resident memory of a handle", subject, *resident_kib, "KiB", bounds.resident_kib);
    } else {
        report.note("resident memory of a handle: not measured, this system does not report it");
    }

    std::vector<double> set_up_ms;
    for (int i = 0; i < effort.handles_timed; ++i) {
        const double start_us = wall_us();
        void* const made = createHandle(channels, type);
        set_up_ms.push_back((wall_us() - start_us) / 1000);
        aem_ReleaseSurround(made);
    }
    report.row("set-up, median", subject, median(set_up_ms), "ms", atMost(5.0, 1.0));
}

// Wall-clock time of each single call, after one pass over the material to warm up.
std::vector<double> timeCalls_us(Engine& engine, const Material& material, int calls) {
    std::vector<double> calls_us;
    std::size_t frame = 0;
    const int warm = static_cast<int>(material.frames() / engine.callFrames());
    for (int i = -warm; i < calls; ++i) {
        const double start_us = wall_us();
        engine.process(frame);
        const double call_us = wall_us() - start_us;
        if (i >= 0) calls_us.push_back(call_us);
        frame = (frame + engine.callFrames()) % material.frames();
    }
    return calls_us;
}

// Calls of 240 frames line up with partitions of 256 in a pattern of 16 calls. The largest median among the
// 16 positions shows how unevenly the engine itself works, whatever else the machine does.
double slowestInPattern_us(const std::vector<double>& calls_us) {
    constexpr std::size_t kPatternCalls = 16;
    double slowest_us = 0;
    for (std::size_t first = 0; first < kPatternCalls; ++first) {
        std::vector<double> alike_us;
        for (std::size_t i = first; i < calls_us.size(); i += kPatternCalls) alike_us.push_back(calls_us[i]);
        slowest_us = std::max(slowest_us, median(alike_us));
    }
    return slowest_us;
}

void measureCalls(Report& report, const Effort& effort, std::size_t channels, int type,
                  std::size_t call_frames) {
    const Layout layout = makeLayout(channels, type);
    const Material material = makeMaterial(channels, channels, kMaterialStep_frames, 1);
    const auto engine = makeOurEngine(layout, material, call_frames);
    const std::string subject = layout.name + " type " + std::to_string(type);

    const std::vector<double> calls_us = timeCalls_us(*engine, material, effort.calls_timed);
    const double p50_us = median(calls_us);
    const double p99_us = quantile(calls_us, 0.99);
    report.row("median", subject, p50_us, "us");
    report.row("99th percentile", subject, p99_us, "us");
    // Long calls differ in work: some complete one block more than others.
    const bool is_short = call_frames == kShortCall_frames;
    report.row("99th percentile / median", subject, p99_us / p50_us, "",
               is_short ? atMost(1.5, 1.2) : Bounds{});
    if (!is_short) return;
    report.row("slowest call of the pattern / median", subject, slowestInPattern_us(calls_us) / p50_us, "");
}

// Contestants refer to this object, so it must stay where it is.
struct Subject {
    Subject(std::string subject_name, std::size_t channels, std::size_t sounding, int loudness,
            std::size_t frames)
        : name(std::move(subject_name)),
          layout(makeLayout(channels, 1)),
          material(makeMaterial(channels, sounding, frames, loudness)),
          engine(makeOurEngine(layout, material, kShortCall_frames)) {}

    // @return the peak before the limiter
    double check() const {
        const Reference reference = convolveDirectly(layout, material);
        checkOutput(*engine, material, reference);
        return reference.peak();
    }
    void pass() const {
        for (std::size_t frame = 0; frame < material.frames(); frame += engine->callFrames()) {
            engine->process(frame);
        }
    }
    Contestant contestant() const {
        return {name, [this] { pass(); }, static_cast<double>(material.frames()) / kRate_hz};
    }

    std::string name;
    Layout layout;
    Material material;
    std::unique_ptr<Engine> engine;
};

// Silent channels cost less, a working limiter costs more.
void measureSignals(Report& report, const Effort& effort) {
    report.section("Cost by signal, type 1; outputs checked");
    const std::size_t frames = effort.material_steps * kMaterialStep_frames;
    const Subject stereo("stereo", 2, 2, 1, frames);
    const Subject all("7.1", 8, 8, 1, frames);
    const Subject front("7.1, six channels silent", 8, 2, 1, frames);
    const Subject loud("7.1, limiter at work", 8, 8, 16, frames);
    std::vector<double> peaks;
    std::vector<Contestant> contestants;
    for (const Subject* const subject : {&stereo, &all, &front, &loud}) {
        peaks.push_back(subject->check());
        contestants.push_back(subject->contestant());
    }
    const std::vector<Timing> timings = takeTurns(contestants, effort.turns);
    for (std::size_t i = 0; i < timings.size(); ++i) {
        report.row(timings[i].name, "", median(timings[i].cpu_ms_per_s), "ms", {},
                   "peak before the limiter " + std::to_string(peaks[i]));
    }
    report.row("7.1 with six channels silent / stereo", "", medianRatio(timings[2], timings[0]), "",
               atMost({}, 1.3));
}

}  // namespace

void measureSurround(Report& report, const Effort& effort) {
    report.section("Cost of a handle");
    for (const int type : {1, 13}) {
        for (std::size_t i = 0; i < std::size(kChannelCounts); ++i) {
            measureHandle(report, effort, kChannelCounts[i], type, kMemoryBounds[i]);
        }
    }
    for (const std::size_t call_frames : {kShortCall_frames, kLongCall_frames}) {
        report.section("Single calls of " + std::to_string(call_frames) +
                       " frames: wall-clock time, needs a quiet machine");
        for (const int type : {1, 13}) {
            for (const std::size_t channels : kChannelCounts) {
                measureCalls(report, effort, channels, type, call_frames);
            }
        }
    }
    measureSignals(report, effort);
}

}  // namespace compare
