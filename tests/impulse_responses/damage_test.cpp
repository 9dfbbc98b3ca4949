// Each quality row detects the defect that it is there for: every kind of damage to the responses breaks the
// row beside it in kDamages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <utility>

#include "decay.h"
#include "interaural.h"
#include "quality_rows.h"

namespace response_quality {
namespace {

constexpr double kHeadRadius_m = 0.0875;
constexpr std::size_t kCingo = 0;
constexpr std::size_t kBingo51 = 1;
constexpr std::size_t kMode2Of51 = 2;

// cingo, Bingo 5.1 and mode 2 of 5.1: one set of each kind keeps the tests fast.
Responses oneSetOfEachKind() {
    Responses all = compiledResponses();
    return {{all.sets[0], all.sets[1], all.sets[7]}, all.audio_stage};
}

struct Damage {
    const char* name;
    void (*spoil)(Responses&);
    Row (*row)(const Responses&);
};

void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}

Ears& left(Responses& responses, std::size_t set) {
    return responses.sets[set].sources[0].ears;
}

Ears& centre(Responses& responses, std::size_t set) {
    return responses.sets[set].sources[2].ears;
}

void scale(Signal& signal, double factor) {
    for (double& value : signal) value *= factor;
}

void shift(Signal& signal, std::ptrdiff_t samples) {
    if (samples > 0) {
        std::rotate(signal.rbegin(), signal.rbegin() + samples, signal.rend());
    } else {
        std::rotate(signal.begin(), signal.begin() - samples, signal.end());
    }
}

void scaleFrom(Ears& ears, double from_s, double factor) {
    for (Signal& ear : ears) {
        for (std::size_t n = onset(ear) + static_cast<std::size_t>(from_s * kRate_hz); n < ear.size(); ++n) {
            ear[n] *= factor;
        }
    }
}

// One-pole low-pass.
void dull(Signal& signal) {
    double last = 0.0;
    for (double& value : signal) {
        last += 0.3 * (value - last);
        value = last;
    }
}

void decayFaster(Ears& ears, double rate_per_s) {
    for (Signal& ear : ears) {
        for (std::size_t n = 0; n < ear.size(); ++n) {
            ear[n] *= std::exp(-rate_per_s * static_cast<double>(n) / kRate_hz);
        }
    }
}

Row delays(const Responses& responses) {
    return interauralDelays(responses, kHeadRadius_m);
}
Row decayAt500(const Responses& responses) {
    return reverberationTimes(responses, 500.0, -0.3, 0.3);
}
Row decayAt1000(const Responses& responses) {
    return reverberationTimes(responses, 1000.0, -0.2, 0.2);
}
Row decayAt8000(const Responses& responses) {
    return reverberationTimes(responses, 8000.0, -0.35, 0.2);
}

const Damage kDamages[] = {
    {"SwappedEarsInTheDelays", [](Responses& r) { std::swap(left(r, kCingo)[0], left(r, kCingo)[1]); },
     delays},
    {"SwappedEarsInTheTreble", [](Responses& r) { std::swap(left(r, kCingo)[0], left(r, kCingo)[1]); },
     trebleLevelDifferences},
    {"SwappedEarsInTheMidrange", [](Responses& r) { std::swap(left(r, kCingo)[0], left(r, kCingo)[1]); },
     middleLevelDifferences},
    {"FarEarFourSamplesLate", [](Responses& r) { shift(left(r, kCingo)[1], 4); }, delays},
    {"FarEarFourSamplesEarly", [](Responses& r) { shift(left(r, kCingo)[1], -4); }, delays},
    {"CentreOneSampleOffTheMiddle", [](Responses& r) { shift(centre(r, kBingo51)[1], 1); }, centralDelays},
    {"CentreOneDecibelOffTheMiddle", [](Responses& r) { scale(centre(r, kBingo51)[0], 1.12); },
     centralLevelDifferences},
    {"ReverberationTwiceAsStrong", [](Responses& r) { scaleFrom(left(r, kMode2Of51), 0.0026, 2.0); },
     directToReverberantRatios},
    {"ReverberationHalfAsStrong", [](Responses& r) { scaleFrom(left(r, kMode2Of51), 0.0026, 0.5); },
     directToReverberantRatios},
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
    {"DullFrontColour",
     [](Responses& r) {
         for (Source& source : r.sets[kCingo].sources) {
             for (Signal& ear : source.ears) dull(ear);
         }
     },
     frontColourRms},
    {"DullFrontThirdOctave",
     [](Responses& r) {
         for (Source& source : r.sets[kMode2Of51].sources) {
             for (Signal& ear : source.ears) dull(ear);
         }
     },
     frontColourWorst},
    {"NoCrosstalk", [](Responses& r) { scale(left(r, kCingo)[1], 0.1); }, cingoCrosstalk},
    {"IdenticalEars",
     [](Responses& r) {
         for (Source& source : r.sets[kCingo].sources) source.ears[1] = source.ears[0];
     },
     monoCorrelations},
    {"ClickBeforeTheArrival", [](Responses& r) { left(r, kCingo)[0][2] += 0.004; }, energiesBeforeArrival},
    {"TruncatedEnd", [](Responses& r) { left(r, kCingo)[0].resize(2500); }, energiesAtTheEnd},
    {"ConstantOffset",
     [](Responses& r) {
         for (double& value : left(r, kCingo)[0]) value += 1e-6;
     },
     constantParts},
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
         for (Source& source : r.sets[kMode2Of51].sources) {
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

class ResponseDamage : public testing::TestWithParam<Damage> {};

TEST_P(ResponseDamage, BreaksItsQualityRow) {
    Responses responses = oneSetOfEachKind();
    ASSERT_TRUE(GetParam().row(responses).holds()) << "the row fails before the damage";
    GetParam().spoil(responses);
    EXPECT_FALSE(GetParam().row(responses).holds());
}

INSTANTIATE_TEST_SUITE_P(Each, ResponseDamage, testing::ValuesIn(kDamages),
                         [](const auto& damage) { return std::string(damage.param.name); });

}  // namespace
}  // namespace response_quality
