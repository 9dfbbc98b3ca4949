// A layout: one record with everything that distinguishes one kind of surround from another. layouts.h lists
// all layouts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "response_formats.h"
#include "source.h"

namespace sonivex {

/** A response as integers: taps times the divisor of its layout. */
using ResponseTable = std::vector<std::int16_t>;

/** The constants of one layout. */
struct Layout {
    int width;  // samples of an input frame
    /** Sources in the order of the float additions, which decides the bits of the output. */
    std::span<const Source> sources;
    /** Tables mode by mode; in a mode source by source, left ear before right, as the agents are numbered. */
    std::span<const ResponseTable* const> tables;
    ResponseFormat format;  // of the tables
    int log_line = 0;       // line number in the pipeline's log lines, see effect_log.h
    const char* log_null_handle = "[audio]::kv surround handle is NULL.\n";
    bool has_audio_stage = false;  // true: the ear signals pass through kAudio as well
};

/** Responses of one mode. [any, concurrent] real-time safe */
constexpr std::size_t responsesOf(const Layout& layout) {
    std::size_t responses = 0;
    for (const Source& source : layout.sources) responses += hasBothEars(source) ? 2 : 1;
    return responses;
}

/** Returns the tables of one mode, in the order of Layout::tables.
 *  @param mode 1 or 2; every other value is 3. A layout without modes has one set of tables for all modes.
 *  [any, concurrent] real-time safe */
constexpr std::span<const ResponseTable* const> tablesOf(const Layout& layout, unsigned mode) {
    const std::size_t count = responsesOf(layout);
    const std::size_t set = mode == 1 || mode == 2 ? mode - 1 : 2;
    return layout.tables.subspan(layout.tables.size() == count ? 0 : set * count, count);
}

/** True if a stream of `channels` channels comes in frames of this layout. Mono input has two (equal)
 *  samples per frame. [any, concurrent] real-time safe */
constexpr bool takesChannels(const Layout& layout, int channels) {
    return channels == layout.width || (channels == 1 && layout.width == 2);
}

}  // namespace sonivex
