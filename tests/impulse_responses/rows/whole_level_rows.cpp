#include <array>
#include <cmath>
#include <string>

#include "interaural.h"
#include "quality_rows.h"
#include "row_loops.h"

namespace response_quality {
namespace {

using Octaves = std::array<double, kLevelOctaves_hz.size()>;

// At 30, 90, 110 and 140 degrees; in the octaves 250 Hz to 8 kHz.
constexpr std::array<Octaves, 4> kLeastOctaves_db{{{1.2, 2.0, 4.0, 4.2, 6.3, 7.5},
                                                   {2.5, 3.6, 4.0, 5.0, 6.2, 8.0},
                                                   {2.0, 4.0, 5.0, 7.0, 6.0, 9.0},
                                                   {1.2, 3.6, 5.5, 4.4, 4.0, 4.3}}};
constexpr double kLeastOfEach_db = 0.5;
constexpr std::array kLeastSpeech_db{2.4, 3.3, 3.3, 2.8};
// The larger rooms of modes 2 and 3 take a part of the difference away.
constexpr std::array kOctaveAllowances_db{0.0, 0.0, 0.3, 0.8};
constexpr std::array kSpeechAllowances_db{0.0, 0.0, 0.0, 0.3};
constexpr double kMostOctavesApart_db = 1.8;
constexpr double kMostSpeechApart_db = 1.0;

std::string octaveName(std::size_t octave) {
    return ", " + std::to_string(std::lround(kLevelOctaves_hz[octave])) + " Hz";
}

// Towards the loudspeaker: near ear over far ear.
LevelDifferences nearOverFar(const Source& source) {
    LevelDifferences differences = levelDifferences(source.ears);
    for (double& value_db : differences.octaves_db) value_db *= nearSign(source);
    differences.speech_db *= nearSign(source);
    return differences;
}

// Adds the figures of a loudspeaker on the left and its mirror image.
void addPair(const ResponseSet& set, std::size_t left, std::size_t right, WholeLevelRows& rows) {
    const Source& source = set.sources[left];
    const LevelDifferences a = nearOverFar(source);
    const LevelDifferences b = nearOverFar(set.sources[right]);
    const std::size_t place = placeAtTheSide(source);
    const auto mode = static_cast<std::size_t>(set.mode);
    const std::string pair = pairName(set, source);
    for (std::size_t i = 0; i < kLevelOctaves_hz.size(); ++i) {
        const std::string octave = octaveName(i);
        rows.octaves.figures.push_back({pair + octave, (a.octaves_db[i] + b.octaves_db[i]) / 2.0,
                                        kLeastOctaves_db[place][i] - kOctaveAllowances_db[mode], kNoLimit});
        rows.each.figures.push_back({source.name + octave, a.octaves_db[i], kLeastOfEach_db, kNoLimit});
        rows.each.figures.push_back(
            {set.sources[right].name + octave, b.octaves_db[i], kLeastOfEach_db, kNoLimit});
    }
    rows.speech.figures.push_back({pair, (a.speech_db + b.speech_db) / 2.0,
                                   kLeastSpeech_db[place] - kSpeechAllowances_db[mode], kNoLimit});
    if (feedsEachEarItsOwnChannel(set)) return;  // a single loudspeaker has no direction there
    for (std::size_t i = 0; i < kLevelOctaves_hz.size(); ++i) {
        const std::string octave = octaveName(i);
        rows.mirrored_octaves.figures.push_back(
            {pair + octave, std::abs(a.octaves_db[i] - b.octaves_db[i]), 0.0, kMostOctavesApart_db});
    }
    rows.mirrored_speech.figures.push_back(
        {pair, std::abs(a.speech_db - b.speech_db), 0.0, kMostSpeechApart_db});
}

}  // namespace

WholeLevelRows wholeLevelRows(const Responses& responses) {
    WholeLevelRows rows{
        .octaves = {"level difference of the whole, octaves, mean of pair", "dB", {}},
        .each = {"level difference of the whole, octaves, every loudspeaker", "dB", {}},
        .speech = {"level difference of the whole, speech, mean of pair", "dB", {}},
        .mirrored_octaves = {"mirrored pair, level differences of an octave apart", "dB", {}},
        .mirrored_speech = {"mirrored pair, level differences of speech apart", "dB", {}},
    };
    for (const ResponseSet& set : responses.sets) {
        for (const auto& [left, right] : mirrorPairs(set)) addPair(set, left, right, rows);
    }
    return rows;
}

}  // namespace response_quality
