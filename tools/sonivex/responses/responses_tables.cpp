#include "responses_tables.h"

#include <array>
#include <cstddef>

#include "impulse_response_tables.h"
#include "response_formats.h"
#include "table_list.h"

namespace sonivex_tool {
namespace {

using Names = std::span<const char* const>;

// The loudspeakers of each layout, in the order of the tables. The modes have no low-frequency channel.
constexpr std::array kStereo{"front left", "front right"};
constexpr std::array k51{"front left",    "front right",   "centre",
                         "low frequency", "surround left", "surround right"};
constexpr std::array k71{"front left", "front right", "centre",    "low frequency",
                         "back left",  "back right",  "side left", "side right"};
constexpr std::array k51Mode{"front left", "front right", "centre", "surround left", "surround right"};
constexpr std::array k71Mode{"front left", "front right", "centre",    "back left",
                             "back right", "side left",   "side right"};

constexpr std::array kNoLoudspeaker{""};

// `tables` come in the order of table_list.h: for each source, the left ear's before the right ear's.
ResponseSet makeSet(const std::string& name, const std::string& use, Names loudspeakers,
                    const std::vector<ResponseTable>& tables,
                    const sonivex::ResponseFormat& format = sonivex::kSurroundFormat) {
    ResponseSet set{.name = name, .use = use, .format = format, .sources = {}};
    for (std::size_t i = 0; i < loudspeakers.size(); ++i) {
        set.sources.push_back({loudspeakers[i], tables.at(2 * i), tables.at(2 * i + 1)});
    }
    return set;
}

// Expands to one list element with its trailing comma.
#define SONIVEX_RESPONSE_TABLE(name) ResponseTable{#name, k_##name},

ResponseSet stereoMode(const std::string& number, const std::vector<ResponseTable>& tables) {
    ResponseSet set = makeSet("2.0-mode" + number, "MegaBass mode " + number + ", stereo", kStereo, tables);
    set.has_crosstalk = false;
    return set;
}

ResponseSet mode51(const std::string& number, const std::vector<ResponseTable>& tables) {
    return makeSet("5.1-mode" + number, "MegaBass mode " + number + ", 5.1", k51Mode, tables);
}

ResponseSet mode71(const std::string& number, const std::vector<ResponseTable>& tables) {
    return makeSet("7.1-mode" + number, "MegaBass mode " + number + ", 7.1", k71Mode, tables);
}

std::vector<ResponseSet> makeSets() {
    std::vector<ResponseSet> sets;
    sets.push_back(makeSet("cingo", "3DSurround, stereo", kStereo,
                           {SONIVEX_TABLES_BINGO_2(SONIVEX_RESPONSE_TABLE)}, sonivex::kBingo2Format));
    sets.push_back(makeSet("bingo-5.1", "3DSurround, 5.1", k51,
                           {SONIVEX_TABLES_BINGO_5_1(SONIVEX_RESPONSE_TABLE)}, sonivex::kBingo51Format));
    sets.push_back(makeSet("bingo-7.1", "3DSurround, 7.1", k71,
                           {SONIVEX_TABLES_BINGO_7_1(SONIVEX_RESPONSE_TABLE)}, sonivex::kBingo71Format));
    sets.push_back(stereoMode("1", {SONIVEX_TABLES_SURROUND_2(SONIVEX_RESPONSE_TABLE, mode1)}));
    sets.push_back(stereoMode("2", {SONIVEX_TABLES_SURROUND_2(SONIVEX_RESPONSE_TABLE, mode2)}));
    sets.push_back(stereoMode("3", {SONIVEX_TABLES_SURROUND_2(SONIVEX_RESPONSE_TABLE, mode3)}));
    sets.push_back(mode51("1", {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_RESPONSE_TABLE, mode1)}));
    sets.push_back(mode51("2", {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_RESPONSE_TABLE, mode2)}));
    sets.push_back(mode51("3", {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_RESPONSE_TABLE, mode3)}));
    sets.push_back(mode71("1", {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_RESPONSE_TABLE, mode1)}));
    sets.push_back(mode71("2", {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_RESPONSE_TABLE, mode2)}));
    sets.push_back(mode71("3", {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_RESPONSE_TABLE, mode3)}));
    const ResponseTable audio{"dolby441", k_dolby441};
    sets.push_back(
        makeSet("audio", "MegaBass, second stage", kNoLoudspeaker, {audio, audio}, sonivex::kAudioFormat));
    return sets;
}

#undef SONIVEX_RESPONSE_TABLE

}  // namespace

const std::vector<ResponseSet>& allResponseSets() {
    static const std::vector<ResponseSet> sets = makeSets();
    return sets;
}

const ResponseSet* findResponseSet(const std::string& name) {
    for (const ResponseSet& set : allResponseSets()) {
        if (set.name == name) return &set;
    }
    return nullptr;
}

std::vector<double> gainsOf(const ResponseTable& table, const ResponseSet& set) {
    std::vector<double> gains;
    gains.reserve(table.samples.size());
    for (const std::int16_t sample : table.samples) gains.push_back(sample / set.format.divisor);
    return gains;
}

}  // namespace sonivex_tool
