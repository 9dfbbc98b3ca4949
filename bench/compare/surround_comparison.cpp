#include "surround_comparison.h"

#include <cstdio>
#include <map>
#include <numeric>
#include <stdexcept>

#include "ffmpeg_engines.h"
#include "float_engine.h"
#include "machine.h"
#include "our_engine.h"
#include "output_check.h"
#include "turns.h"
#include "zita_engine.h"

namespace compare {
namespace {

using MakeEngine = std::unique_ptr<Engine> (*)(const Layout&, const Material&);

constexpr std::size_t kOurs = 0;
constexpr std::size_t kOurCall_frames = 240;

struct Peer {
    MakeEngine make;
    std::map<std::string, Bounds> ratio;  // of its time to ours, by layout
};

std::vector<Peer> peersOf(int type) {
    if (type == 13) {
        const Bounds twice = atLeast({}, 2.0);
        return {{makeZitaEngine, {{"stereo", twice}, {"5.1", twice}, {"7.1", twice}}}};
    }
    return {
        {makeZitaEngine,
         {{"stereo", atLeast(2.0, 3.5)}, {"5.1", atLeast(1.3, 2.3)}, {"7.1", atLeast(1.8, 2.5)}}},
        {makeAfirEngine,
         {{"stereo", atLeast(2.2, 3.8)}, {"5.1", atLeast(1.6, 2.7)}, {"7.1", atLeast(2.2, 3.0)}}},
        {makeShortFramesAfirEngine, {{"stereo", {}}, {"5.1", {}}, {"7.1", {}}}},
        {makeHeadphoneEngine, {{"stereo", atLeast(8, 14)}, {"5.1", atLeast(6, 10)}, {"7.1", atLeast(8, 11)}}},
        {makeFloatEngine, {{"stereo", atLeast(0.85, 1.0)}, {"5.1", {}}, {"7.1", atLeast(0.85, 1.0)}}},
    };
}

Contestant contestantFor(Engine& engine, const Material& material) {
    const auto pass = [&engine, &material] {
        for (std::size_t frame = 0; frame < material.frames(); frame += engine.callFrames()) {
            engine.process(frame);
        }
    };
    return {engine.name(), pass, static_cast<double>(material.frames()) / kRate_hz};
}

/* What an engine that works in blocks is late in a stream that comes in our calls. */
std::size_t delayBehindOurCalls_frames(const Engine& engine) {
    return engine.callFrames() - std::gcd(engine.callFrames(), kOurCall_frames);
}

/* One that takes part: its output has been found right. */
struct Entrant {
    std::unique_ptr<Engine> engine;
    std::string check;
    Bounds ratio;
};

/* A peer of another release may refuse its options or have another gain: it is left out then, and said so. */
std::vector<Entrant> admitPeers(const Report& report, const Layout& layout, const Material& material,
                                const Reference& reference) {
    std::vector<Entrant> entrants;
    for (const Peer& peer : peersOf(layout.type)) {
        try {
            auto engine = peer.make(layout, material);
            const std::string check = checkOutput(*engine, material, reference);
            entrants.push_back({std::move(engine), check, peer.ratio.at(layout.name)});
        } catch (const std::runtime_error& error) {
            report.note(std::string("LEFT OUT: ") + error.what());
        }
    }
    return entrants;
}

void compareLayout(Report& report, const Effort& effort, std::size_t channels, int type) {
    const Layout layout = makeLayout(channels, type);
    const Material material =
        makeMaterial(channels, channels, effort.material_steps * kMaterialStep_frames, 1);
    const Reference reference = convolveDirectly(layout, material);
    report.section("Type " + std::to_string(type) + ", " + layout.name +
                   ": processor time for a second of audio");

    std::vector<Entrant> entrants = admitPeers(report, layout, material, reference);
    auto ours = makeOurEngine(layout, material);
    const std::string check = checkOutput(*ours, material, reference);
    entrants.insert(entrants.begin(), Entrant{std::move(ours), check, {}});
    std::vector<Contestant> contestants;
    contestants.reserve(entrants.size());
    for (const Entrant& entrant : entrants) contestants.push_back(contestantFor(*entrant.engine, material));
    const std::vector<Timing> timings = takeTurns(contestants, effort.turns);

    for (std::size_t i = 0; i < entrants.size(); ++i) {
        char remark[160];
        std::snprintf(remark, sizeof(remark), "+-%.1f %%, %zu frames late; %s", spread_percent(timings[i]),
                      delayBehindOurCalls_frames(*entrants[i].engine), entrants[i].check.c_str());
        report.row(timings[i].name, layout.name, median(timings[i].cpu_ms_per_s), "ms", {}, remark);
    }
    for (std::size_t i = 1; i < entrants.size(); ++i) {
        report.row(timings[i].name + " / " + timings[kOurs].name, layout.name,
                   medianRatio(timings[i], timings[kOurs]), "", entrants[i].ratio);
    }
}

}  // namespace

void compareSurround(Report& report, const Effort& effort) {
    for (const int type : {1, 13}) {
        for (const std::size_t channels : {2U, 6U, 8U}) compareLayout(report, effort, channels, type);
    }
    report.note("threads of this process while it measured: " + std::to_string(threadsOfThisProcess()));
}

}  // namespace compare
