#include "comparisons.h"

#include <map>
#include <optional>
#include <stdexcept>

#include "engines.h"
#include "machine.h"
#include "turns.h"

namespace compare {
namespace {

// Bounds of scalar time / vector time, by doubles per vector.
const std::map<int, Bounds> kRatios = {
    {2, atLeast(2.2, 2.8)}, {4, atLeast(3.8, 5.0)}, {8, atLeast(4.9, 7.0)}};

// An engine and the vector width that it is restricted to, if any.
struct Entrant {
    std::string name;
    std::unique_ptr<Engine> engine;
    std::optional<VectorWidth> width;
};

class AtWidth {
  public:
    explicit AtWidth(const std::optional<VectorWidth>& width) {
        if (width) held_.emplace(*width);
    }

  private:
    std::optional<HeldToWidth> held_;
};

void pass(const Entrant& entrant, const Material& material, Ears* ears) {
    const AtWidth at_width(entrant.width);
    for (std::size_t frame = 0; frame < material.frames(); frame += entrant.engine->callFrames()) {
        entrant.engine->process(frame);
        if (ears != nullptr) entrant.engine->appendOutput(*ears);
    }
}

void compareLayout(Report& report, const Effort& effort, std::size_t channels) {
    const Layout layout = makeLayout(channels, 1);
    const Material material =
        makeMaterial(channels, channels, effort.material_steps * kMaterialStep_frames, 1);

    std::vector<Entrant> entrants;
    entrants.push_back({"scalar", makeScalarEngine(layout, material), {}});
    for (const VectorWidth& width : vectorWidths()) {
        const HeldToWidth held(width);
        entrants.push_back({width.name + ", " + std::to_string(width.doubles) + " doubles",
                            makeOurEngine(layout, material, kShortCall_frames), width});
    }

    Ears expected;
    std::vector<Contestant> contestants;
    for (const Entrant& entrant : entrants) {
        Ears ears;
        pass(entrant, material, &ears);
        if (expected.empty()) expected = ears;
        if (ears != expected)
            throw std::runtime_error(entrant.name + ": the output differs from the scalar engine's");
        contestants.push_back({entrant.name, [&] { pass(entrant, material, nullptr); },
                               static_cast<double>(material.frames()) / kRate_hz});
    }
    const std::vector<Timing> timings = takeTurns(contestants, effort.turns);
    for (const Timing& timing : timings) {
        report.row(timing.name, layout.name, median(timing.cpu_ms_per_s), "ms");
    }
    for (std::size_t i = 1; i < timings.size(); ++i) {
        report.row("scalar / " + timings[i].name, layout.name, medianRatio(timings[0], timings[i]), "",
                   kRatios.at(entrants[i].width->doubles));
    }
}

}  // namespace

void compareVectorWidths(Report& report, const Effort& effort) {
    report.section("Vector widths, type 1: processor time per second of audio; outputs equal to the bit");
    for (const std::size_t channels : {2U, 8U}) compareLayout(report, effort, channels);
}

}  // namespace compare
