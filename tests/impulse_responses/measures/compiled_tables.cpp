#include "compiled_tables.h"

#include <algorithm>
#include <cstdlib>

#include "impulse_response_tables.h"

namespace response_quality {
namespace {

// The name of a table is that of its array.
#define SONIVEX_TABLE(array) \
    Table {                  \
#array, array        \
    }

constexpr Table kCingo[] = {
    SONIVEX_TABLE(k_cingoLL48),
    SONIVEX_TABLE(k_cingoLR48),
    SONIVEX_TABLE(k_cingoRL48),
    SONIVEX_TABLE(k_cingoRR48),
};
constexpr Table kBingo51[] = {
    SONIVEX_TABLE(k_5_1_1_h_cL48), SONIVEX_TABLE(k_5_1_1_h_cR48), SONIVEX_TABLE(k_5_1_2_h_cL48),
    SONIVEX_TABLE(k_5_1_2_h_cR48), SONIVEX_TABLE(k_5_1_3_h_cL48), SONIVEX_TABLE(k_5_1_3_h_cR48),
    SONIVEX_TABLE(k_5_1_4_h_cL48), SONIVEX_TABLE(k_5_1_4_h_cR48), SONIVEX_TABLE(k_5_1_5_h_cL48),
    SONIVEX_TABLE(k_5_1_5_h_cR48), SONIVEX_TABLE(k_5_1_6_h_cL48), SONIVEX_TABLE(k_5_1_6_h_cR48),
};
constexpr Table kBingo71[] = {
    SONIVEX_TABLE(k_7_1_1_h_cL48), SONIVEX_TABLE(k_7_1_1_h_cR48), SONIVEX_TABLE(k_7_1_2_h_cL48),
    SONIVEX_TABLE(k_7_1_2_h_cR48), SONIVEX_TABLE(k_7_1_3_h_cL48), SONIVEX_TABLE(k_7_1_3_h_cR48),
    SONIVEX_TABLE(k_7_1_4_h_cL48), SONIVEX_TABLE(k_7_1_4_h_cR48), SONIVEX_TABLE(k_7_1_5_h_cL48),
    SONIVEX_TABLE(k_7_1_5_h_cR48), SONIVEX_TABLE(k_7_1_6_h_cL48), SONIVEX_TABLE(k_7_1_6_h_cR48),
    SONIVEX_TABLE(k_7_1_7_h_cL48), SONIVEX_TABLE(k_7_1_7_h_cR48), SONIVEX_TABLE(k_7_1_8_h_cL48),
    SONIVEX_TABLE(k_7_1_8_h_cR48),
};
constexpr Table kMode1OfTwo[] = {
    SONIVEX_TABLE(k_2_1_h_mode1L48),
    SONIVEX_TABLE(k_2_1_h_mode1R48),
    SONIVEX_TABLE(k_2_2_h_mode1L48),
    SONIVEX_TABLE(k_2_2_h_mode1R48),
};
constexpr Table kMode2OfTwo[] = {
    SONIVEX_TABLE(k_2_1_h_mode2L48),
    SONIVEX_TABLE(k_2_1_h_mode2R48),
    SONIVEX_TABLE(k_2_2_h_mode2L48),
    SONIVEX_TABLE(k_2_2_h_mode2R48),
};
constexpr Table kMode3OfTwo[] = {
    SONIVEX_TABLE(k_2_1_h_mode3L48),
    SONIVEX_TABLE(k_2_1_h_mode3R48),
    SONIVEX_TABLE(k_2_2_h_mode3L48),
    SONIVEX_TABLE(k_2_2_h_mode3R48),
};
constexpr Table kMode1Of51[] = {
    SONIVEX_TABLE(k_5_1_1_h_mode1L48), SONIVEX_TABLE(k_5_1_1_h_mode1R48), SONIVEX_TABLE(k_5_1_2_h_mode1L48),
    SONIVEX_TABLE(k_5_1_2_h_mode1R48), SONIVEX_TABLE(k_5_1_3_h_mode1L48), SONIVEX_TABLE(k_5_1_3_h_mode1R48),
    SONIVEX_TABLE(k_5_1_4_h_mode1L48), SONIVEX_TABLE(k_5_1_4_h_mode1R48), SONIVEX_TABLE(k_5_1_5_h_mode1L48),
    SONIVEX_TABLE(k_5_1_5_h_mode1R48),
};
constexpr Table kMode2Of51[] = {
    SONIVEX_TABLE(k_5_1_1_h_mode2L48), SONIVEX_TABLE(k_5_1_1_h_mode2R48), SONIVEX_TABLE(k_5_1_2_h_mode2L48),
    SONIVEX_TABLE(k_5_1_2_h_mode2R48), SONIVEX_TABLE(k_5_1_3_h_mode2L48), SONIVEX_TABLE(k_5_1_3_h_mode2R48),
    SONIVEX_TABLE(k_5_1_4_h_mode2L48), SONIVEX_TABLE(k_5_1_4_h_mode2R48), SONIVEX_TABLE(k_5_1_5_h_mode2L48),
    SONIVEX_TABLE(k_5_1_5_h_mode2R48),
};
constexpr Table kMode3Of51[] = {
    SONIVEX_TABLE(k_5_1_1_h_mode3L48), SONIVEX_TABLE(k_5_1_1_h_mode3R48), SONIVEX_TABLE(k_5_1_2_h_mode3L48),
    SONIVEX_TABLE(k_5_1_2_h_mode3R48), SONIVEX_TABLE(k_5_1_3_h_mode3L48), SONIVEX_TABLE(k_5_1_3_h_mode3R48),
    SONIVEX_TABLE(k_5_1_4_h_mode3L48), SONIVEX_TABLE(k_5_1_4_h_mode3R48), SONIVEX_TABLE(k_5_1_5_h_mode3L48),
    SONIVEX_TABLE(k_5_1_5_h_mode3R48),
};
constexpr Table kMode1Of71[] = {
    SONIVEX_TABLE(k_7_1_1_h_mode1L48), SONIVEX_TABLE(k_7_1_1_h_mode1R48), SONIVEX_TABLE(k_7_1_2_h_mode1L48),
    SONIVEX_TABLE(k_7_1_2_h_mode1R48), SONIVEX_TABLE(k_7_1_3_h_mode1L48), SONIVEX_TABLE(k_7_1_3_h_mode1R48),
    SONIVEX_TABLE(k_7_1_4_h_mode1L48), SONIVEX_TABLE(k_7_1_4_h_mode1R48), SONIVEX_TABLE(k_7_1_5_h_mode1L48),
    SONIVEX_TABLE(k_7_1_5_h_mode1R48), SONIVEX_TABLE(k_7_1_6_h_mode1L48), SONIVEX_TABLE(k_7_1_6_h_mode1R48),
    SONIVEX_TABLE(k_7_1_7_h_mode1L48), SONIVEX_TABLE(k_7_1_7_h_mode1R48),
};
constexpr Table kMode2Of71[] = {
    SONIVEX_TABLE(k_7_1_1_h_mode2L48), SONIVEX_TABLE(k_7_1_1_h_mode2R48), SONIVEX_TABLE(k_7_1_2_h_mode2L48),
    SONIVEX_TABLE(k_7_1_2_h_mode2R48), SONIVEX_TABLE(k_7_1_3_h_mode2L48), SONIVEX_TABLE(k_7_1_3_h_mode2R48),
    SONIVEX_TABLE(k_7_1_4_h_mode2L48), SONIVEX_TABLE(k_7_1_4_h_mode2R48), SONIVEX_TABLE(k_7_1_5_h_mode2L48),
    SONIVEX_TABLE(k_7_1_5_h_mode2R48), SONIVEX_TABLE(k_7_1_6_h_mode2L48), SONIVEX_TABLE(k_7_1_6_h_mode2R48),
    SONIVEX_TABLE(k_7_1_7_h_mode2L48), SONIVEX_TABLE(k_7_1_7_h_mode2R48),
};
constexpr Table kMode3Of71[] = {
    SONIVEX_TABLE(k_7_1_1_h_mode3L48), SONIVEX_TABLE(k_7_1_1_h_mode3R48), SONIVEX_TABLE(k_7_1_2_h_mode3L48),
    SONIVEX_TABLE(k_7_1_2_h_mode3R48), SONIVEX_TABLE(k_7_1_3_h_mode3L48), SONIVEX_TABLE(k_7_1_3_h_mode3R48),
    SONIVEX_TABLE(k_7_1_4_h_mode3L48), SONIVEX_TABLE(k_7_1_4_h_mode3R48), SONIVEX_TABLE(k_7_1_5_h_mode3L48),
    SONIVEX_TABLE(k_7_1_5_h_mode3R48), SONIVEX_TABLE(k_7_1_6_h_mode3L48), SONIVEX_TABLE(k_7_1_6_h_mode3R48),
    SONIVEX_TABLE(k_7_1_7_h_mode3L48), SONIVEX_TABLE(k_7_1_7_h_mode3R48),
};

#undef SONIVEX_TABLE

constexpr TableSet kSets[] = {
    {"cingo", kCingo},           {"Bingo 5.1", kBingo51},     {"Bingo 7.1", kBingo71},
    {"2.0 mode 1", kMode1OfTwo}, {"2.0 mode 2", kMode2OfTwo}, {"2.0 mode 3", kMode3OfTwo},
    {"5.1 mode 1", kMode1Of51},  {"5.1 mode 2", kMode2Of51},  {"5.1 mode 3", kMode3Of51},
    {"7.1 mode 1", kMode1Of71},  {"7.1 mode 2", kMode2Of71},  {"7.1 mode 3", kMode3Of71},
};

}  // namespace

std::span<const TableSet> compiledSets() {
    return kSets;
}

Table compiledAudioStage() {
    return {"k_dolby441", k_dolby441};
}

int peakOf(const Table& table) {
    int peak = 0;
    for (const std::int16_t sample : table.samples) peak = std::max(peak, std::abs(int{sample}));
    return peak;
}

}  // namespace response_quality
