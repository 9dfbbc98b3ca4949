#include <algorithm>

#include "damages.h"
#include "decay.h"
#include "interaural.h"

namespace response_quality {
namespace {

Row decayAt500(const Responses& responses) {
    return reverberationTimes(responses, 500.0, -0.3, 0.3);
}
Row decayAt1000(const Responses& responses) {
    return reverberationTimes(responses, 1000.0, -0.2, 0.2);
}
Row decayAt2000(const Responses& responses) {
    return reverberationTimes(responses, 2000.0, -0.2, 0.2);
}
Row decayAt4000(const Responses& responses) {
    return reverberationTimes(responses, 4000.0, -0.35, 0.2);
}
Row decayAt8000(const Responses& responses) {
    return reverberationTimes(responses, 8000.0, -0.35, 0.2);
}

Row meanRatios(const Responses& responses) {
    return ratioRows(responses).mean;
}
Row lowestRatios(const Responses& responses) {
    return ratioRows(responses).lowest;
}
Row ratioSpreads(const Responses& responses) {
    return ratioRows(responses).spread;
}
Row lowestRatiosOfSums(const Responses& responses) {
    return sumRatioRows(responses).lowest;
}
Row ratioSpreadsOfSums(const Responses& responses) {
    return sumRatioRows(responses).spread;
}

constexpr Damage kRoomDamages[] = {
    {"ReverberationTwiceAsStrong",
     [](Responses& r) {
         spoilFrontPair(r, kMode3Of51, [](Ears& ears, std::size_t) { scaleFrom(ears, 0.0026, 2.0); });
     },
     meanRatios},
    {"ReverberationHalfAsStrong",
     [](Responses& r) {
         spoilFrontPair(r, kMode3Of51, [](Ears& ears, std::size_t) { scaleFrom(ears, 0.0026, 0.5); });
     },
     meanRatios},
    {"ReverberationTwiceAsStrongInOneOctave",
     [](Responses& r) {
         spoilFrontPair(r, kCingo, [](Ears& ears, std::size_t) { scaleOctaveOfRoom(ears, 1000.0, 2.0); });
     },
     lowestRatios},
    {"NoReverberationInOneOctave",
     [](Responses& r) {
         spoilFrontPair(r, kCingo, [](Ears& ears, std::size_t) { scaleOctaveOfRoom(ears, 8000.0, 0.0); });
     },
     ratioSpreads},
    {"SummedReverberationTwiceAsStrong",
     [](Responses& r) {
         spoilFrontPair(r, kMode2OfTwo, [](Ears& ears, std::size_t) { scaleFrom(ears, 0.0026, 2.0); });
     },
     lowestRatiosOfSums},
    {"NoSummedReverberationInOneOctave",
     [](Responses& r) {
         spoilFrontPair(r, kMode2OfTwo,
                        [](Ears& ears, std::size_t) { scaleOctaveOfRoom(ears, 8000.0, 0.0); });
     },
     ratioSpreadsOfSums},
    {"EqualEarsInTheFirst80ms",
     [](Responses& r) { std::copy_n(centre(r, kBingo51)[0].begin(), 4000, centre(r, kBingo51)[1].begin()); },
     earlyCorrelations},
    {"EchoAfter8ms",
     [](Responses& r) {
         const Ears dry = directSound(left(r, kCingo));
         for (std::size_t ear = 0; ear < 2; ++ear) {
             Signal& signal = left(r, kCingo)[ear];
             const std::size_t from = onset(signal) + 384;
             for (std::size_t n = 0; n < dry[ear].size(); ++n) signal[from + n] += 0.4 * dry[ear][n];
         }
     },
     strongestReflections},
    {"ShorterDecayAt500Hz", [](Responses& r) { decayFaster(left(r, kBingo51), 20.0); }, decayAt500},
    {"ShorterDecayAt1kHz", [](Responses& r) { decayFaster(left(r, kBingo51), 12.0); }, decayAt1000},
    {"ShorterDecayAt2kHz", [](Responses& r) { decayFaster(left(r, kBingo51), 12.0); }, decayAt2000},
    {"LongerDecayAt4kHz", [](Responses& r) { decayFaster(left(r, kBingo51), -12.0); }, decayAt4000},
    {"LongerDecayAt8kHz", [](Responses& r) { decayFaster(left(r, kBingo51), -12.0); }, decayAt8000},
    {"GapInTheTail",
     [](Responses& r) {
         for (Signal& ear : left(r, kCingo)) {
             for (std::size_t n = 4800; n < 6000; ++n) ear[n] *= 0.1;
         }
     },
     tailUnevenness},
    {"SwellInTheTail", [](Responses& r) { scaleFrom(left(r, kCingo), 0.1, 1.8); }, tailRises},
    {"SameTailInBothEars",
     [](Responses& r) {
         Ears& ears = left(r, kCingo);
         std::copy(ears[0].begin() + 900, ears[0].end(), ears[1].begin() + 900);
     },
     tailCoherenceErrors},
    {"LouderDirectSoundOnTheLeft", [](Responses& r) { scale(left(r, kCingo)[0], 1.06); },
     mirroredDirectLevels},
    {"MoreEnergyOnTheLeft", [](Responses& r) { scale(left(r, kCingo)[0], 1.13); }, mirroredEnergies},
    {"SameTailForBothLoudspeakersOfAPair",
     [](Responses& r) {
         const Ears& from = left(r, kCingo);
         Ears& to = r.sets[kCingo].sources[1].ears;
         std::copy(from[0].begin() + 900, from[0].end(), to[1].begin() + 900);
     },
     mirroredTailCorrelations},
    {"ClickBeforeTheArrival", [](Responses& r) { left(r, kCingo)[0][2] += 0.004; }, energiesBeforeArrival},
    {"TruncatedEnd", [](Responses& r) { left(r, kCingo)[0].resize(2500); }, energiesAtTheEnd},
    {"ConstantOffset",
     [](Responses& r) {
         for (double& value : left(r, kCingo)[0]) value += 1e-6;
     },
     constantParts},
};

}  // namespace

std::span<const Damage> roomDamages() {
    return kRoomDamages;
}

}  // namespace response_quality
