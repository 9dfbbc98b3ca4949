#pragma once

#include <string>
#include <vector>

#include "av_objects.h"
#include "stream_choice.h"

namespace sonivex_tool {

/** The audio streams of a container, and where they are among all of its streams. */
struct AudioTracks {
    std::vector<AudioTrack> tracks;
    std::vector<int> indices;  // of the streams, one for each track
};

/** Lists the audio streams of an opened file. */
AudioTracks audioTracksOf(const AVFormatContext& container);

/** Returns text of a file as it can stand in one line: with a space in place of each control character. */
std::string asOneLine(std::string text);

}  // namespace sonivex_tool
