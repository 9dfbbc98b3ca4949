// Every table of impulse responses as compiled in, with its name and length, by set and in the order of the
// sources: left ear, right ear of source 1, of source 2 and so on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace response_quality {

struct Table {
    std::string_view name;
    std::span<const std::int16_t> samples;
};

/** The tables of one layout in one room. */
struct TableSet {
    std::string_view name;
    std::span<const Table> tables;
};

/** cingo, Bingo 5.1 and 7.1, then modes 1 to 3 of two channels, of 5.1 and of 7.1: twelve sets. */
std::span<const TableSet> compiledSets();

/** The one table of the Audio stage, which serves both ears. */
Table compiledAudioStage();

/** The largest magnitude. */
int peakOf(const Table& table);

}  // namespace response_quality
