#include "responses_tables.h"

#include <cstddef>

#include "impulse_response_tables.h"
#include "response_formats.h"
#include "table_list.h"

namespace sonivex_tool {
namespace {

// `tables` come in the order of table_list.h: for each source, the left ear's before the right ear's.
ResponseSet makeSet(const std::string& name, const std::string& use, const std::vector<ResponseTable>& tables,
                    const sonivex::ResponseFormat& format = sonivex::kSurroundFormat) {
    ResponseSet set{.name = name, .use = use, .format = format, .sources = {}};
    for (std::size_t i = 0; i + 1 < tables.size(); i += 2) set.sources.push_back({tables[i], tables[i + 1]});
    return set;
}

// Expands to one list element with its trailing comma.
#define SONIVEX_RESPONSE_TABLE(name) ResponseTable{#name, k_##name},

std::vector<ResponseSet> makeSets() {
    std::vector<ResponseSet> sets;
    sets.push_back(makeSet("cingo", "3DSurround, stereo", {SONIVEX_TABLES_BINGO_2(SONIVEX_RESPONSE_TABLE)},
                           sonivex::kBingo2Format));
    sets.push_back(makeSet("bingo-5.1", "3DSurround, 5.1", {SONIVEX_TABLES_BINGO_5_1(SONIVEX_RESPONSE_TABLE)},
                           sonivex::kBingo51Format));
    sets.push_back(makeSet("bingo-7.1", "3DSurround, 7.1", {SONIVEX_TABLES_BINGO_7_1(SONIVEX_RESPONSE_TABLE)},
                           sonivex::kBingo71Format));
    sets.push_back(makeSet("2.0-mode1", "MegaBass mode 1, stereo",
                           {SONIVEX_TABLES_SURROUND_2(SONIVEX_RESPONSE_TABLE, mode1)}));
    sets.push_back(makeSet("2.0-mode2", "MegaBass mode 2, stereo",
                           {SONIVEX_TABLES_SURROUND_2(SONIVEX_RESPONSE_TABLE, mode2)}));
    sets.push_back(makeSet("2.0-mode3", "MegaBass mode 3, stereo",
                           {SONIVEX_TABLES_SURROUND_2(SONIVEX_RESPONSE_TABLE, mode3)}));
    sets.push_back(makeSet("5.1-mode1", "MegaBass mode 1, 5.1",
                           {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_RESPONSE_TABLE, mode1)}));
    sets.push_back(makeSet("5.1-mode2", "MegaBass mode 2, 5.1",
                           {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_RESPONSE_TABLE, mode2)}));
    sets.push_back(makeSet("5.1-mode3", "MegaBass mode 3, 5.1",
                           {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_RESPONSE_TABLE, mode3)}));
    sets.push_back(makeSet("7.1-mode1", "MegaBass mode 1, 7.1",
                           {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_RESPONSE_TABLE, mode1)}));
    sets.push_back(makeSet("7.1-mode2", "MegaBass mode 2, 7.1",
                           {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_RESPONSE_TABLE, mode2)}));
    sets.push_back(makeSet("7.1-mode3", "MegaBass mode 3, 7.1",
                           {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_RESPONSE_TABLE, mode3)}));
    const ResponseTable audio{"dolby441", k_dolby441};
    sets.push_back(makeSet("audio", "MegaBass, second stage", {audio, audio}, sonivex::kAudioFormat));
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
