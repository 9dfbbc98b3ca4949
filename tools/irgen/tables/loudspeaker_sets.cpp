#include "loudspeaker_sets.h"

#include <array>
#include <initializer_list>

#include "loudspeaker_azimuths.h"

namespace sonivex_irgen {
namespace {

using Kind = LoudspeakerGroup::Kind;

// Direct-to-reverberant ratio of each kind of loudspeaker in the octaves up to 4 kHz (see wantedRatio_db).
struct Ratios {
    double front_db = 0.0;
    double centre_db = 0.0;
    double surround_db = 0.0;
};

constexpr Ratios kListeningRatios{6.0, 7.0, 6.3};
constexpr double kLowFrequencyRatio_db = 20.0;  // over all energy above 300 Hz

constexpr std::uint64_t kCingoSeed = 101;
constexpr std::uint64_t kBingo51Seed = 1000;
constexpr std::uint64_t kBingo71Seed = 2000;
constexpr std::uint64_t kLowFrequencySeed = 90;  // added to the set's own

// Parameters in which the three modes of the effect differ.
struct Mode {
    std::uint64_t number = 0;
    Room room;
    Ratios ratios;
    double air_db = 0.0;
    double bass_shelf_db = 0.0;
    double largest_magnitude = 0.0;  // falls with the bass lift, so that all modes are equally loud
};

// Two ratios leave the pattern. With 6 dB in front, the level difference of speech in the middle room would
// fall short by chance; with 8 dB around, the ears would be too alike in the small room.
constexpr std::array<Mode, 3> kModes{{
    {1, kSmallRoom, {8.0, 12.0, 6.8}, 1.0, 0.0, 16805.0},
    {2, kMiddleRoom, {6.6, 12.0, 6.0}, 1.75, 2.0, 14977.0},
    {3, kLargeRoom, {5.0, 12.0, 5.0}, 2.5, 4.0, 13349.0},
}};

std::vector<std::string> numberedSources(const std::string& layout, int count, const std::string& kind) {
    std::vector<std::string> names;
    for (int source = 1; source <= count; ++source) {
        std::string& name = names.emplace_back(layout);
        name.append("_").append(std::to_string(source)).append("_h_").append(kind);
    }
    return names;
}

// Groups in the order of the sources: front pair, centre, low frequency, surround pairs. The seed rises by 10
// from group to group; the low-frequency group has an offset of its own and does not count.
std::vector<LoudspeakerGroup> surroundGroups(std::uint64_t seed, const Ratios& ratios, bool has_low_frequency,
                                             std::initializer_list<double> surround_pairs_deg) {
    std::vector<LoudspeakerGroup> groups{{Kind::kFrontPair, kFront_deg, seed, ratios.front_db},
                                         {Kind::kCentre, kCentre_deg, seed + 10, ratios.centre_db}};
    if (has_low_frequency) {
        groups.push_back({Kind::kLowFrequency, kCentre_deg, seed + kLowFrequencySeed, kLowFrequencyRatio_db});
    }
    std::uint64_t pair_seed = seed + 20;
    for (const double azimuth_deg : surround_pairs_deg) {
        groups.push_back({Kind::kSurroundPair, azimuth_deg, pair_seed, ratios.surround_db});
        pair_seed += 10;
    }
    return groups;
}

LoudspeakerSet cingoSet() {
    return {.name = "cingo",
            .source_names = {"cingoL", "cingoR"},
            .format = sonivex::kBingo2Format,
            .room = kListeningRoom,
            .groups = {{Kind::kFrontPair, kFront_deg, kCingoSeed, kListeningRatios.front_db}},
            .front_programme = Programme::kMusicPair,
            .is_centre_equal_in_both_ears = false,
            .air_db = 1.5,
            .bass_shelf_db = 0.0,
            .high_pass_hz = 12.0,
            .largest_magnitude = 9597.0};
}

LoudspeakerSet bingoSet(const std::string& layout, int sources, const sonivex::ResponseFormat& format,
                        const std::vector<LoudspeakerGroup>& groups) {
    return {.name = "Bingo " + layout,
            .source_names = numberedSources(layout, sources, "c"),
            .format = format,
            .room = kListeningRoom,
            .groups = groups,
            .front_programme = Programme::kMusicPair,
            .is_centre_equal_in_both_ears = false,
            .air_db = 1.5,
            .bass_shelf_db = 0.0,
            .high_pass_hz = 12.0,
            .largest_magnitude = std::nullopt};
}

LoudspeakerSet modeSet(const Mode& mode, const std::string& layout,
                       const std::vector<LoudspeakerGroup>& groups) {
    int sources = 0;
    for (const LoudspeakerGroup& group : groups) sources += group.isPair() ? 2 : 1;
    const std::string kind = "mode" + std::to_string(mode.number);
    return {.name = layout + " " + kind,
            .source_names = numberedSources(layout, sources, kind),
            .format = sonivex::kSurroundFormat,
            .room = mode.room,
            .groups = groups,
            .front_programme = groups.size() == 1 ? Programme::kOwnChannel : Programme::kMusicPair,
            .is_centre_equal_in_both_ears = true,
            .air_db = mode.air_db,
            .bass_shelf_db = mode.bass_shelf_db,
            .high_pass_hz = 15.0,
            .largest_magnitude = mode.largest_magnitude};
}

}  // namespace

std::vector<LoudspeakerSet> loudspeakerSets() {
    std::vector<LoudspeakerSet> sets;
    sets.push_back(cingoSet());
    sets.push_back(bingoSet("5_1", 6, sonivex::kBingo51Format,
                            surroundGroups(kBingo51Seed, kListeningRatios, true, {kSurround_deg})));
    // The back pair comes before the side pair, as in an eight-channel stream.
    sets.push_back(bingoSet("7_1", 8, sonivex::kBingo71Format,
                            surroundGroups(kBingo71Seed, kListeningRatios, true, {kBack_deg, kSide_deg})));
    for (const Mode& mode : kModes) {
        const std::uint64_t seed = 100 * mode.number;
        sets.push_back(
            modeSet(mode, "2", {{Kind::kFrontPair, kFront_deg, 3000 + seed, mode.ratios.front_db}}));
    }
    for (const Mode& mode : kModes) {
        const std::uint64_t seed = 4000 + 100 * mode.number;
        sets.push_back(modeSet(mode, "5_1", surroundGroups(seed, mode.ratios, false, {kSurround_deg})));
    }
    for (const Mode& mode : kModes) {
        const std::uint64_t seed = 5000 + 100 * mode.number;
        sets.push_back(
            modeSet(mode, "7_1", surroundGroups(seed, mode.ratios, false, {kBack_deg, kSide_deg})));
    }
    return sets;
}

}  // namespace sonivex_irgen
