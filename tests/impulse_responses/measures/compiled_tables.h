// All tables of impulse responses as compiled in, with their names and lengths. They are grouped by set and
// follow the order of the sources: left and right ear of source 1, then of source 2 and so on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace response_quality {

/** One impulse response as integers. */
struct Table {
    std::string_view name;
    std::span<const std::int16_t> samples;
};

/** Tables of one layout in one room. */
struct TableSet {
    std::string_view name;
    std::span<const Table> tables;
};

/** The twelve sets: cingo; Bingo 5.1 and 7.1; modes 1 to 3 for two channels, for 5.1 and for 7.1. */
std::span<const TableSet> compiledSets();

/** The table of the Audio stage, which serves both ears. */
Table compiledAudioStage();

/** Largest magnitude of a table. */
int peakOf(const Table& table);

}  // namespace response_quality
