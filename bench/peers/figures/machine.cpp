#include "vector_targets.h"
// vector_targets.h comes first, so that HWY_TARGETS below means the library's targets.
#include "machine.h"

#include <fcntl.h>
#include <fftw3.h>
#include <hwy/targets.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "engines.h"

extern "C" {
#include <libavutil/avutil.h>
}

namespace compare {
namespace {

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

int doublesOf(std::int64_t target) {
#ifdef __x86_64__
    if (target <= HWY_AVX3) return 8;
    if (target == HWY_AVX2) return 4;
#endif
    return 2;
}

// Restricts Highway's dispatch to these targets; 0 lifts the restriction.
void allow(std::int64_t targets) {
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

std::string loadAverage() {
    std::ifstream file("/proc/loadavg");
    std::string minute;
    file >> minute;
    return minute;
}

}  // namespace

std::vector<VectorWidth> vectorWidths() {
    std::vector<VectorWidth> widths;
    for (std::int64_t left = hwy::SupportedTargets() & HWY_TARGETS; left != 0; left &= left - 1) {
        const std::int64_t target = left & -left;  // the best of them: Highway gives it the lowest bit
        const int doubles = doublesOf(target);
        if (!widths.empty() && widths.back().doubles == doubles) continue;
        widths.push_back({hwy::TargetName(target), doubles, target});
    }
    std::reverse(widths.begin(), widths.end());
    return widths;
}

HeldToWidth::HeldToWidth(const VectorWidth& width) {
    allow(hwy::SupportedTargets() & ~(width.target - 1));  // better targets have lower bits
}

HeldToWidth::~HeldToWidth() {
    allow(0);
}

QuietStandardOutput::QuietStandardOutput() {
    std::fflush(stdout);
    results_ = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

QuietStandardOutput::~QuietStandardOutput() {
    std::fflush(stdout);
    dup2(results_, STDOUT_FILENO);
    close(results_);
}

void describeMachine(const Report& report) {
    const VectorWidth width = vectorWidths().back();
    report.note(processorName() + ", " + std::to_string(std::thread::hardware_concurrency()) +
                " processors, load " + loadAverage());
    report.note("vectors in use: " + width.name + ", " + std::to_string(width.doubles) + " doubles");
    report.note("zita-convolver " + zitaVersion() + ", FFmpeg " + av_version_info() + ", " + fftwf_version);
    report.note("compiler " __VERSION__);
}

int threadsOfThisProcess() {
    int threads = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        threads += entry.is_directory() ? 1 : 0;
    }
    return threads;
}

std::optional<std::size_t> residentBytes() {
    malloc_trim(0);
    std::ifstream file("/proc/self/smaps_rollup");  // exact; statm lags behind
    for (std::string key; file >> key;) {
        std::size_t resident_kib = 0;
        if (key == "Rss:" && file >> resident_kib) return 1024 * resident_kib;
    }
    return {};
}

}  // namespace compare
