#include "tables.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "audio_stage.h"
#include "equaliser.h"
#include "finish.h"
#include "loudness.h"
#include "loudspeaker_sets.h"
#include "mixing.h"
#include "source_components.h"

namespace sonivex_irgen {
namespace {

constexpr double kLowFrequencyMagnitude = 32392.0;
constexpr double kFrontSmoothing_octaves = 1.0 / 3.0;
constexpr int kFrontRounds = 3;

// Surround groups get a gentler equaliser: side and rear cues lie in the fine structure of the spectrum.
constexpr double kSurroundSmoothing_octaves = 0.5;
constexpr int kSurroundRounds = 1;
constexpr double kSurroundStrength = 0.7;

EqualiserPlan equaliserPlan(const LoudspeakerSet& set, const LoudspeakerGroup& group) {
    EqualiserPlan plan{.programme = Programme::kOneChannel,
                       .air_db = set.air_db,
                       .smoothing_octaves = kFrontSmoothing_octaves,
                       .rounds = kFrontRounds,
                       .strength = 1.0,
                       .direct_to_reverberant_db = group.direct_to_reverberant_db};
    if (group.kind == LoudspeakerGroup::Kind::kFrontPair) plan.programme = set.front_programme;
    if (group.kind == LoudspeakerGroup::Kind::kSurroundPair) {
        plan.smoothing_octaves = kSurroundSmoothing_octaves;
        plan.rounds = kSurroundRounds;
        plan.strength = kSurroundStrength;
    }
    return plan;
}

void scaleSources(std::vector<EarSignals>& sources, double factor) {
    for (EarSignals& ears : sources) {
        for (std::vector<double>& ear : ears) {
            for (double& sample : ear) sample *= factor;
        }
    }
}

double largestMagnitude(const std::vector<EarSignals>& sources) {
    double largest = 0.0;
    for (const EarSignals& ears : sources) {
        for (const std::vector<double>& ear : ears) largest = std::max(largest, peakMagnitude(ear));
    }
    return largest;
}

std::vector<SourceComponents> groupComponents(const HeadModel& head, const LoudspeakerSet& set,
                                              const LoudspeakerGroup& group) {
    const bool are_both_heard_by_one_ear =
        group.kind == LoudspeakerGroup::Kind::kFrontPair && set.front_programme == Programme::kOwnChannel;
    const SourceRecipe first{group.azimuth_deg, group.seed, set.format.samples, are_both_heard_by_one_ear};
    std::vector<SourceComponents> components{loudspeakerComponents(head, set.room, first)};
    if (group.isPair()) {
        SourceRecipe second = first;
        second.azimuth_deg = -group.azimuth_deg;
        ++second.seed;
        components.push_back(loudspeakerComponents(head, set.room, second));
    } else if (set.is_centre_equal_in_both_ears) {
        copyLeftToRight(components.front());
    }
    return components;
}

// A set in the making: responses, not yet integers.
struct SetResponses {
    std::vector<EarSignals> sources;
    std::vector<bool> is_low_frequency;
    double largest_gain_db = 0.0;
};

void addGroup(const HeadModel& head, const LoudspeakerSet& set, const LoudspeakerGroup& group,
              SetResponses& made) {
    EqualisedGroup result{};
    const bool is_low_frequency = group.kind == LoudspeakerGroup::Kind::kLowFrequency;
    if (is_low_frequency) {
        const SourceComponents components = lowFrequencyComponents(
            head, set.room,
            {.azimuth_deg = group.azimuth_deg, .seed = group.seed, .samples = set.format.samples});
        result.sources = {mixBroadband(components, group.direct_to_reverberant_db)};
    } else {
        const EqualiserPlan plan = equaliserPlan(set, group);
        result = equaliseGroup(groupComponents(head, set, group), plan);
        scaleSources(result.sources,
                     dbToAmplitude(-pinkLoudness_db(programmePower(result.sources, plan.programme))));
    }
    made.largest_gain_db = std::max(made.largest_gain_db, result.largest_gain_db);
    for (EarSignals& ears : result.sources) {
        for (std::vector<double>& ear : ears) {
            finishResponse({set.bass_shelf_db, set.high_pass_hz, set.format.faded_part, kRate_hz}, ear);
        }
        made.sources.push_back(std::move(ears));
        made.is_low_frequency.push_back(is_low_frequency);
    }
}

// Integer that stands for a gain of 1 in the design. It meets the set's largest magnitude if there is one;
// otherwise it is the divisor, which keeps the level of a dry channel.
double setScale(const LoudspeakerSet& set, const SetResponses& made) {
    if (!set.largest_magnitude) return set.format.divisor;
    return *set.largest_magnitude / largestMagnitude(made.sources);
}

double peakOf(const std::vector<Table>& tables) {
    int peak = 0;
    for (const Table& table : tables) {
        for (const std::int16_t sample : table.samples) peak = std::max(peak, std::abs(int{sample}));
    }
    return peak;
}

// Loudness change of the front pair's programme through the effect.
double frontLoudness_db(const LoudspeakerSet& set, const SetResponses& made, double scale) {
    const std::vector<EarSignals> front(made.sources.begin(), made.sources.begin() + 2);
    return pinkLoudness_db(programmePower(front, set.front_programme)) +
           2.0 * powerToDb(scale / set.format.divisor);
}

Table makeTable(const std::string& name, const std::vector<double>& response, double scale) {
    try {
        return {name, quantise(response, scale)};
    } catch (const UnmetTableFact& reason) {
        throw UnmetTableFact(name + ": " + reason.what());
    }
}

TableSet makeLoudspeakerTables(const HeadModel& head, const LoudspeakerSet& set) {
    SetResponses made;
    for (const LoudspeakerGroup& group : set.groups) addGroup(head, set, group, made);

    TableSet tables{.name = set.name,
                    .tables = {},
                    .scale = setScale(set, made),
                    .peak = 0.0,
                    .loudness_change_db = 0.0,
                    .largest_gain_db = made.largest_gain_db};
    for (std::size_t source = 0; source < made.sources.size(); ++source) {
        const EarSignals& ears = made.sources[source];
        const double scale =
            made.is_low_frequency[source] ? kLowFrequencyMagnitude / largestMagnitude({ears}) : tables.scale;
        for (std::size_t ear = 0; ear < kEars; ++ear) {
            const std::string name = set.source_names[source] + (ear == 0 ? "L48" : "R48");
            tables.tables.push_back(makeTable(name, ears[ear], scale));
        }
    }
    tables.peak = peakOf(tables.tables);
    tables.loudness_change_db = frontLoudness_db(set, made, tables.scale);
    return tables;
}

TableSet makeAudioTable() {
    const std::vector<double> response = audioStageResponse();
    const double scale = kAudioLargestMagnitude / peakMagnitude(response);
    TableSet set{.name = "Audio",
                 .tables = {makeTable("dolby441", response, scale)},
                 .scale = scale,
                 .peak = 0.0,
                 .loudness_change_db = 0.0,
                 .largest_gain_db = 0.0};
    set.peak = peakOf(set.tables);
    // Filter and programme run at 48 kHz here. At the table's own rate of 44.1 kHz the result would differ by
    // a few hundredths of a dB.
    set.loudness_change_db =
        pinkLoudness_db(
            programmePower({{response, std::vector<double>(response.size(), 0.0)}}, Programme::kOneChannel)) +
        2.0 * powerToDb(scale / sonivex::kAudioFormat.divisor);
    return set;
}

}  // namespace

std::vector<TableSet> makeTableSets(const HeadModel& head) {
    constexpr std::size_t kAudioPlace = 3;  // after cingo and the two Bingo sets
    std::vector<TableSet> sets;
    for (const LoudspeakerSet& set : loudspeakerSets()) {
        if (sets.size() == kAudioPlace) sets.push_back(makeAudioTable());
        sets.push_back(makeLoudspeakerTables(head, set));
    }
    return sets;
}

}  // namespace sonivex_irgen
