#include "comparisons.h"

#include <cstdio>
#include <iterator>
#include <map>
#include <numeric>
#include <stdexcept>

#include "engines.h"
#include "ffmpeg_engines.h"
#include "float_engine.h"
#include "machine.h"
#include "output_check.h"
#include "turns.h"

namespace compare {
namespace {

using MakeEngine = std::unique_ptr<Engine> (*)(const Layout&, const Material&);

// Call lengths of the library; its contestants come first, in this order.
constexpr std::size_t kOurCalls_frames[] = {kShortCall_frames, kLongCall_frames};
constexpr std::size_t kOurs = std::size(kOurCalls_frames);

// Bounds by layout; a layout that is not in the map has none.
using LayoutBounds = std::map<std::string, Bounds>;

struct Peer {
    MakeEngine make;
    LayoutBounds to_ours[kOurs];  // bounds of peer time / our time, in the order of kOurCalls_frames
};

std::vector<Peer> peersOf(int type) {
    if (type == 13) {
        return {
            {makeZitaEngine,
             {{{"stereo", atLeast(1.1, 1.5)}, {"5.1", atLeast(1.45, 1.8)}, {"7.1", atLeast(1.5, 1.8)}}, {}}}};
    }
    return {
        {makeZitaEngine,
         {{{"stereo", atLeast(2.0, 2.5)}, {"5.1", atLeast(1.8, 2.1)}, {"7.1", atLeast(1.9, 2.2)}},
          {{"stereo", atLeast(2.2, 2.7)}, {"5.1", atLeast(1.9, 2.3)}, {"7.1", atLeast(2.1, 2.5)}}}},
        {makeAfirEngine,
         {{{"stereo", atLeast(2.2, 3.8)}, {"5.1", atLeast(1.6, 2.7)}, {"7.1", atLeast(2.2, 3.0)}}, {}}},
        {makeShortFramesAfirEngine, {}},
        {makeHeadphoneEngine,
         {{{"stereo", atLeast(8, 14)}, {"5.1", atLeast(6, 10)}, {"7.1", atLeast(8, 11)}}, {}}},
        {makeFloatEngine,
         {{}, {{"stereo", atLeast(0.9, 1.0)}, {"5.1", atLeast(0.9, 1.0)}, {"7.1", atLeast(1.0, 1.1)}}}},
    };
}

Bounds boundsFor(const Layout& layout, const LayoutBounds& bounds) {
    const auto found = bounds.find(layout.name);
    return found == bounds.end() ? Bounds{} : found->second;
}

Contestant contestantFor(Engine& engine, const Material& material) {
    const auto pass = [&engine, &material] {
        for (std::size_t frame = 0; frame < material.frames(); frame += engine.callFrames()) {
            engine.process(frame);
        }
    };
    return {engine.name(), pass, static_cast<double>(material.frames()) / kRate_hz};
}

// Latency of a block engine when fed with our call length.
std::size_t delayBehindOurCalls_frames(const Engine& engine, std::size_t our_call_frames) {
    return engine.callFrames() - std::gcd(engine.callFrames(), our_call_frames);
}

std::string delayInOurCalls(const Engine& peer) {
    const auto text = [&peer](std::size_t our_call_frames) {
        return std::to_string(delayBehindOurCalls_frames(peer, our_call_frames)) + " frames in calls of " +
               std::to_string(our_call_frames);
    };
    return "latency " + text(kShortCall_frames) + ", " + text(kLongCall_frames);
}

// An engine whose output has passed the check.
struct Entrant {
    std::unique_ptr<Engine> engine;
    std::string check;
    std::string delay;
    Bounds to_ours[kOurs] = {};
};

std::vector<Entrant> admitOurs(const Layout& layout, const Material& material, const Reference& reference) {
    std::vector<Entrant> entrants;
    for (const std::size_t call_frames : kOurCalls_frames) {
        auto engine = makeOurEngine(layout, material, call_frames);
        const std::string check = checkOutput(*engine, material, reference);
        const std::string delay = "latency " + std::to_string(engine->delay_frames()) + " frames";
        entrants.push_back(Entrant{std::move(engine), check, delay});
    }
    return entrants;
}

// Another release of a peer may reject our options or apply another gain. It is then left out with a note.
void admitPeers(std::vector<Entrant>& entrants, const Report& report, const Layout& layout,
                const Material& material, const Reference& reference) {
    for (const Peer& peer : peersOf(layout.type)) {
        try {
            auto engine = peer.make(layout, material);
            const std::string check = checkOutput(*engine, material, reference);
            const std::string delay = delayInOurCalls(*engine);
            Entrant entrant{std::move(engine), check, delay};
            for (std::size_t ours = 0; ours < kOurs; ++ours) {
                entrant.to_ours[ours] = boundsFor(layout, peer.to_ours[ours]);
            }
            entrants.push_back(std::move(entrant));
        } catch (const std::runtime_error& error) {
            report.note(std::string("LEFT OUT: ") + error.what());
        }
    }
}

void compareLayout(Report& report, const Effort& effort, std::size_t channels, int type) {
    const Layout layout = makeLayout(channels, type);
    const Material material =
        makeMaterial(channels, channels, effort.material_steps * kMaterialStep_frames, 1);
    const Reference reference = convolveDirectly(layout, material);
    report.section("Type " + std::to_string(type) + ", " + layout.name +
                   ": processor time per second of audio");

    std::vector<Entrant> entrants = admitOurs(layout, material, reference);
    admitPeers(entrants, report, layout, material, reference);
    std::vector<Contestant> contestants;
    contestants.reserve(entrants.size());
    for (const Entrant& entrant : entrants) contestants.push_back(contestantFor(*entrant.engine, material));
    const std::vector<Timing> timings = takeTurns(contestants, effort.turns);

    for (std::size_t i = 0; i < entrants.size(); ++i) {
        char remark[160];
        std::snprintf(remark, sizeof(remark), "+-%.1f %%, %s; %s", spread_percent(timings[i]),
                      entrants[i].delay.c_str(), entrants[i].check.c_str());
        report.row(timings[i].name, layout.name, median(timings[i].cpu_ms_per_s), "ms", {}, remark);
    }
    for (std::size_t i = kOurs; i < entrants.size(); ++i) {
        for (std::size_t ours = 0; ours < kOurs; ++ours) {
            report.row(timings[i].name + " / " + timings[ours].name, layout.name,
                       medianRatio(timings[i], timings[ours]), "", entrants[i].to_ours[ours]);
        }
    }
}

}  // namespace

void compareSurround(Report& report, const Effort& effort) {
    for (const int type : {1, 13}) {
        for (const std::size_t channels : {2U, 6U, 8U}) compareLayout(report, effort, channels, type);
    }
    report.note("threads of this process during the measurement: " + std::to_string(threadsOfThisProcess()));
}

}  // namespace compare
