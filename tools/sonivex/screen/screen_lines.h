#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** A level meter's row. */
struct MeterRow {
    std::optional<double> short_term_lufs;  // EBU R128, of the last 3 s
    std::optional<double> peak_dbfs;        // highest sample of the last second
    double gain_db = 0.0;                   // by which the matching of loudness lowers it
};

/** Everything that the screen shows, as texts and numbers. */
struct ScreenContents {
    std::string title;   // the file
    std::string stream;  // codec, rate and layout
    std::string card;    // where it plays
    double position_s = 0.0;
    std::optional<double> length_s;
    bool is_paused = false;
    bool hears_effect = true;  // false: the original
    std::string effect;        // name and options
    bool is_matching = true;   // the loudness of both
    MeterRow original;
    MeterRow processed;
    std::optional<double> output_peak_dbfs;  // after gains and volume
    double volume_db = 0.0;
    double cpu_share = 0.0;  // of one processor, by the filter
    std::string guard;       // state of the filter's load guard
    uint64_t gaps = 0;       // underruns of the card
    uint64_t clipped_samples = 0;
    std::vector<std::string> events;  // the newest last
};

/** Draws the contents as lines of at most `columns` characters, at most `rows` of them. The lines that matter
 *  most come first, so that a small terminal shows them.
 *  @return no line if there is no room for one */
std::vector<std::string> screenLines(const ScreenContents& contents, int columns, int rows);

/** Draws the contents as one line without control characters, for output that is not a terminal. */
std::string statusLine(const ScreenContents& contents);

}  // namespace sonivex_tool
