#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "decay.h"
#include "diffuseness.h"
#include "interaural.h"
#include "quality_rows.h"

namespace response_quality {
namespace {

constexpr double kNoLowest = -1e9;
constexpr std::array<const char*, 2> kEarNames{" left ear", " right ear"};
constexpr std::size_t kEndSamples = 64;
constexpr double kNothing_db = -200.0;  // stands for zero energy

template <typename Measure>
Row overSources(const Responses& responses, const char* measure, const char* unit, double lowest,
                double highest, Measure value) {
    Row row{measure, unit, {}};
    for (const ResponseSet& set : responses.sets) {
        for (const Source& source : set.sources) {
            row.figures.push_back({source.name, value(set, source), lowest, highest});
        }
    }
    return row;
}

template <typename Measure>
Row overEars(const Responses& responses, const char* measure, double highest_db, Measure value) {
    Row row{measure, "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        for (const Source& source : set.sources) {
            for (std::size_t ear = 0; ear < 2; ++ear) {
                row.figures.push_back(
                    {source.name + kEarNames[ear], value(source, ear), kNoLowest, highest_db});
            }
        }
    }
    const Source audio_stage{.name = "Audio", .ears = {responses.audio_stage, responses.audio_stage}};
    row.figures.push_back({audio_stage.name, value(audio_stage, 0), kNoLowest, highest_db});
    for (Figure& figure : row.figures) figure.value = std::max(figure.value, kNothing_db);
    return row;
}

// Compares each left source with its mirror image on the right: near ear with near ear, far ear with far ear.
template <typename Measure>
Row overMirroredEars(const Responses& responses, const char* measure, const char* unit, double limit,
                     Measure value) {
    Row row{measure, unit, {}};
    for (const ResponseSet& set : responses.sets) {
        for (const auto& [left, right] : mirrorPairs(set)) {
            const Ears& a = set.sources[left].ears;
            const Ears& b = set.sources[right].ears;
            row.figures.push_back({set.sources[left].name + " near ear", value(a, 0, b, 1), -limit, limit});
            row.figures.push_back({set.sources[left].name + " far ear", value(a, 1, b, 0), -limit, limit});
        }
    }
    return row;
}

double energy(const Signal& signal, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t n = from; n < to; ++n) sum += signal[n] * signal[n];
    return sum;
}

double energy(const Signal& signal) {
    return energy(signal, 0, signal.size());
}

}  // namespace

Row directToReverberantRatios(const Responses& responses) {
    return overSources(responses, "direct-to-reverberant ratio, deviation from design", "dB", -1.5, 1.5,
                       [](const ResponseSet&, const Source& source) {
                           return directToReverberant_db(source.ears) - source.direct_to_reverberant_db;
                       });
}

Row strongestReflections(const Responses& responses) {
    return overSources(
        responses, "strongest 1 ms reflection, relative to direct sound", "dB", kNoLowest, -10.0,
        [](const ResponseSet&, const Source& source) { return strongestReflection_db(source.ears); });
}

Row reverberationTimes(const Responses& responses, double octave_hz, double lowest, double highest) {
    const std::string measure =
        "reverberation time deviation, " + std::to_string(std::lround(octave_hz)) + " Hz octave";
    Row row = overSources(responses, measure.c_str(), "%", 100.0 * lowest, 100.0 * highest,
                          [octave_hz](const ResponseSet& set, const Source& source) {
                              const double time_s =
                                  reverberationTime_s(source.ears, octave_hz, set.faded_part);
                              return 100.0 * (time_s / set.reverberation_time_s - 1.0);
                          });
    return row;
}

Row tailUnevenness(const Responses& responses) {
    return overSources(responses, "tail in 5 ms steps, rms deviation from straight decay", "dB", 0.0, 2.5,
                       [](const ResponseSet& set, const Source& source) {
                           return tailUnevenness_db(source.ears, set.faded_part);
                       });
}

Row tailRises(const Responses& responses) {
    return overSources(responses, "tail in 10 ms steps, largest rise", "dB", kNoLowest, 2.0,
                       [](const ResponseSet& set, const Source& source) {
                           return tailRise_db(source.ears, set.faded_part);
                       });
}

Row tailCoherenceErrors(const Responses& responses) {
    Row row{"tail coherence, rms deviation from a diffuse field's", "", {}};
    for (const ResponseSet& set : responses.sets) {
        for (const Source& source : set.sources) {
            if (set.kind == Kind::kMode && source.role == Role::kCentre) continue;
            const double error = coherenceError(source.ears, set.reverberation_time_s, set.faded_part);
            row.figures.push_back({source.name, error, 0.0, 0.2});
        }
    }
    return row;
}

Row mirroredDirectLevels(const Responses& responses) {
    return overMirroredEars(
        responses, "mirrored pair, direct level difference", "dB", 0.4,
        [](const Ears& a, std::size_t ear_a, const Ears& b, std::size_t ear_b) {
            return 10.0 * std::log10(energy(directSound(a)[ear_a]) / energy(directSound(b)[ear_b]));
        });
}

Row mirroredEnergies(const Responses& responses) {
    return overMirroredEars(responses, "mirrored pair, energy difference", "dB", 1.0,
                            [](const Ears& a, std::size_t ear_a, const Ears& b, std::size_t ear_b) {
                                return 10.0 * std::log10(energy(a[ear_a]) / energy(b[ear_b]));
                            });
}

Row mirroredTailCorrelations(const Responses& responses) {
    Row row{"mirrored pair, correlation of the tails", "", {}};
    for (const ResponseSet& set : responses.sets) {
        for (const auto& [left, right] : mirrorPairs(set)) {
            const Ears& a = set.sources[left].ears;
            const Ears& b = set.sources[right].ears;
            for (std::size_t i = 0; i < 4; ++i) {
                const double value =
                    correlation(tailOf(a[i / 2], tailStart(a)), tailOf(b[i % 2], tailStart(b)));
                row.figures.push_back(
                    {set.sources[left].name + kEarNames[i / 2] + " with mirror's" + kEarNames[i % 2], value,
                     -0.35, 0.35});
            }
        }
    }
    return row;
}

Row energiesBeforeArrival(const Responses& responses) {
    return overEars(
        responses, "energy before the first arrival", -60.0, [](const Source& source, std::size_t ear) {
            const std::size_t first = std::min(onset(source.ears[0]), onset(source.ears[1]));
            return 10.0 * std::log10(energy(source.ears[ear], 0, first) / energy(source.ears[ear]));
        });
}

Row energiesAtTheEnd(const Responses& responses) {
    return overEars(
        responses, "energy of the last 64 samples", -60.0, [](const Source& source, std::size_t ear) {
            const Signal& signal = source.ears[ear];
            return 10.0 *
                   std::log10(energy(signal, signal.size() - kEndSamples, signal.size()) / energy(signal));
        });
}

Row constantParts(const Responses& responses) {
    return overEars(responses, "gain at 0 Hz", -45.0, [](const Source& source, std::size_t ear) {
        double sum = 0.0;
        for (const double value : source.ears[ear]) sum += value;
        return 20.0 * std::log10(std::abs(sum) / std::sqrt(energy(source.ears[ear])));
    });
}

}  // namespace response_quality
