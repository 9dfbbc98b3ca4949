#include "commands.h"

#include <cmath>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench_effects.h"
#include "bench_report.h"
#include "bench_rounds.h"
#include "bench_signal.h"
#include "effect.h"
#include "failure.h"
#include "interrupt.h"
#include "option_checks.h"
#include "plugin_option.h"
#include "plugin_search.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

constexpr char kBenchFooter[] =
    "The effects are called directly, on one thread, at 48000 Hz. Each row is the median of several\n"
    "rounds over one second of audio. Other work on the machine slows the effects down.\n"
    "The exit codes are those of `sonivex render`.\n";
constexpr double kShortest_s = 0.1;
constexpr double kLongest_s = 3600.0;

struct BenchChoices {
    std::string effect;
    std::string plugin;
    double seconds = 5.0;
    bool json = false;
};

CLI::Validator duration() {
    return {[](const std::string& text) {
                double seconds = 0.0;
                const bool is_number = CLI::detail::lexical_cast(text, seconds);
                const bool fits = is_number && seconds >= kShortest_s && seconds <= kLongest_s;
                return fits ? std::string() : "must be 0.1 to 3600 seconds, not " + text;
            },
            "", "duration"};
}

// The cases to measure: those of the effect `asked` for, or of all effects if `asked` is empty. Cases whose
// effect the plug-in does not have are left out; if none remains, the command fails.
std::vector<BenchCase> chosenCases(const Vorlin::Plugin& plugin, const std::string& asked) {
    std::vector<BenchCase> cases = benchCases(asked);
    std::erase_if(cases, [&](const BenchCase& shape) {
        return !plugin.exports(findEffect(shape.effect)->exported_function.c_str());
    });
    if (cases.empty()) {
        const std::string missing = asked.empty() ? "any effect" : findEffect(asked)->title;
        throw Failure(ExitCode::EffectMissing, "the plug-in does not have " + missing);
    }
    return cases;
}

// The processor's name as the kernel gives it; mostly empty on processors other than x86-64.
std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        const size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos) return line.substr(colon + 2);
    }
    return {};
}

BenchReport measure(const Vorlin::Plugin& plugin, const BenchChoices& choices) {
    BenchReport report{.processor = processorName(), .vectors = vectorTargetOf(plugin), .rows = {}};
    std::vector<BenchWork> works;
    const std::vector<BenchCase> cases = chosenCases(plugin, choices.effect);
    for (const BenchCase& shape : cases) {
        const auto effect = std::make_shared<BenchEffect>(plugin, shape);
        const int frames = kBenchRateHz - kBenchRateHz % shape.call_frames;
        const auto in =
            std::make_shared<std::vector<int16_t>>(makeBabble(shape.channels, frames, kBenchRateHz));
        works.push_back({.run = [effect, in] { effect->process(*in); },
                         .audio_s = static_cast<double>(frames) / kBenchRateHz});
    }
    const auto timings = takeRounds(works, choices.seconds, systemClocks(), throwIfInterrupted);
    for (size_t i = 0; i < cases.size(); ++i) report.rows.push_back({cases[i], timings[i]});
    return report;
}

void run(const BenchChoices& choices) {
    installSignalHandlers();
    ResultStream result(ResultStream::Prints::Nowhere);  // creating some handles prints a banner
    const auto plugin = loadPlugin(choices.plugin);
    const BenchReport report = measure(*plugin, choices);
    result.write(choices.json ? benchJson(report) : benchText(report));
}

}  // namespace

std::function<void()> addBenchCommand(CLI::App& program) {
    auto choices = std::make_shared<BenchChoices>();
    CLI::App* command =
        program.add_subcommand("bench", "Measure how much processor time each effect takes on this machine");
    command->footer(kBenchFooter);
    command
        ->add_option("--effect", choices->effect,
                     "Measure only this effect: normalizer, surround or dialogue")
        ->option_text("NAME")
        ->check(oneOf(effectNames()));
    command
        ->add_option("--seconds", choices->seconds,
                     "Approximate duration of the measurement, 0.1 to 3600\n(default 5)")
        ->option_text("SECONDS")
        ->check(duration());
    addPluginOption(*command, choices->plugin);
    command->add_flag("--json", choices->json, "Print the results as one JSON object");
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
