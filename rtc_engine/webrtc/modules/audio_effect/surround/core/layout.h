// A layout: everything that tells one way of surround from another, in one record. layouts.h has them all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "source.h"

namespace sonivex {

/** A response as integers: samples times the divisor of its layout. */
using ResponseTable = std::vector<std::int16_t>;

struct Layout {
    int width;  // samples of an input frame
    /** In the order of the float additions, which is part of the output's bits. */
    std::span<const Source> sources;
    /** Mode by mode; in each source by source, left ear before right, as the agents are numbered. */
    std::span<const ResponseTable* const> tables;
    double divisor;       // what stands for 1 in the tables
    std::size_t samples;  // of each table
    int log_line = 0;     // of the pipeline, see effect_log.h
    const char* log_null_handle = "[audio]::kv surround handle is NULL.\n";
    bool has_audio_stage = false;  // what the ears hear goes through kAudio, too
};

/** Responses of one mode. */
constexpr std::size_t responsesOf(const Layout& layout) {
    std::size_t responses = 0;
    for (const Source& source : layout.sources) responses += hasBothEars(source) ? 2 : 1;
    return responses;
}

/** @param mode 1 or 2; every other value is 3. A layout without modes has one set of tables for all. */
constexpr std::span<const ResponseTable* const> tablesOf(const Layout& layout, unsigned mode) {
    const std::size_t count = responsesOf(layout);
    const std::size_t set = mode == 1 || mode == 2 ? mode - 1 : 2;
    return layout.tables.subspan(layout.tables.size() == count ? 0 : set * count, count);
}

/** Whether a stream of `channels` comes in frames of this layout; mono streams bring two samples a frame. */
constexpr bool takesChannels(const Layout& layout, int channels) {
    return channels == layout.width || (channels == 1 && layout.width == 2);
}

}  // namespace sonivex
