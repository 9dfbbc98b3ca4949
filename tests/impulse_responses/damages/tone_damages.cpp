#include <algorithm>

#include "damages.h"

namespace response_quality {
namespace {

constexpr Damage kToneDamages[] = {
    {"DullFrontColour",
     [](Responses& r) {
         for (Source& source : r.sets[kCingo].sources) {
             for (Signal& ear : source.ears) dull(ear);
         }
     },
     frontColourRms},
    {"DullFrontThirdOctave",
     [](Responses& r) {
         for (Source& source : r.sets[kMode3Of51].sources) {
             for (Signal& ear : source.ears) dull(ear);
         }
     },
     frontColourWorst},
    {"DullLoudspeaker",
     [](Responses& r) {
         for (Signal& ear : centre(r, kBingo51)) dull(ear);
     },
     loudspeakerColours},
    {"DullPhantomMiddle",
     [](Responses& r) {
         spoilFrontPair(r, kCingo, [](Ears& ears, std::size_t) {
             for (Signal& ear : ears) dull(ear);
         });
     },
     phantomColourRms},
    {"DullPhantomThirdOctave",
     [](Responses& r) {
         spoilFrontPair(r, kBingo51, [](Ears& ears, std::size_t) {
             for (Signal& ear : ears) dull(ear);
         });
     },
     phantomColourWorst},
    {"NoCrosstalk", [](Responses& r) { scale(left(r, kCingo)[1], 0.1); }, cingoCrosstalk},
    {"IdenticalEars",
     [](Responses& r) {
         for (Source& source : r.sets[kCingo].sources) source.ears[1] = source.ears[0];
     },
     monoCorrelations},
    {"NoBassLiftInTheAudioStage",
     [](Responses& r) {
         std::fill(r.audio_stage.begin(), r.audio_stage.end(), 0.0);
         r.audio_stage[40] = 1.0;
     },
     bassLifts},
    {"WrongDivisorForPinkNoise",
     [](Responses& r) {
         for (Source& source : r.sets[kCingo].sources) {
             for (Signal& ear : source.ears) scale(ear, 0.5);
         }
     },
     pinkLoudnessChanges},
    {"WrongDivisorForMusic",
     [](Responses& r) {
         for (Source& source : r.sets[kMode3Of51].sources) {
             for (Signal& ear : source.ears) scale(ear, 2.0);
         }
     },
     musicLoudnessChanges},
    {"LouderCentre",
     [](Responses& r) {
         for (Signal& ear : centre(r, kBingo51)) scale(ear, 1.25);
     },
     sourceBalances},
    {"SofterLowFrequencies",
     [](Responses& r) {
         for (Signal& ear : r.sets[kBingo51].sources[3].ears) scale(ear, 0.8);
     },
     lowFrequencyLevels},
    {"DullLowFrequencies",
     [](Responses& r) {
         for (Signal& ear : r.sets[kBingo51].sources[3].ears) {
             double last = 0.0;
             for (double& value : ear) value = last += 0.01 * (value - last);
         }
     },
     lowFrequencyRipples},
};

}  // namespace

std::span<const Damage> toneDamages() {
    return kToneDamages;
}

}  // namespace response_quality
