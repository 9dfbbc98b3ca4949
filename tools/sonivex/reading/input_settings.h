#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace sonivex_tool {

/** Tells how to treat timestamps that leave gaps or overlap. */
enum class TimelinePolicy {
    Keep,   // fill gaps with silence and cut overlaps, so that audio stays in step with the picture
    Ignore  // decode the packets one after the other
};

/** Where the audio to decode is. */
struct InputSettings {
    std::string path;  // a file, an address that libavformat opens; "-" or "pipe:0": standard input
    /** Audio stream to read: its number among the audio streams, from 0, or a language such as "eng". Without
     *  it, the stream that the container marks as default, or else the first one. */
    std::optional<std::string> stream = {};
    TimelinePolicy timeline = TimelinePolicy::Keep;
    /** Data of other streams that is kept in memory if it precedes the audio of a file that cannot be read
     *  twice, such as a pipe. */
    int64_t most_kept_bytes = int64_t{256} << 20U;
    bool keeps_packets = false;  // of the other streams, from the beginning, for AudioSource::deliverPackets
};

}  // namespace sonivex_tool
