#pragma once

#include <string>
#include <vector>

#include "av_objects.h"
#include "output_settings.h"

namespace sonivex_tool {

/** A stream of the input, as far as the choice of streams needs to know it. */
struct StreamFacts {
    AVMediaType kind = AVMEDIA_TYPE_UNKNOWN;
    AVCodecID codec = AV_CODEC_ID_NONE;
    std::string codec_name;   // libavcodec's, or the container's four letters
    std::string language;     // as the container names it; empty if unknown
    bool is_picture = false;  // cover art
    bool is_rotated = false;  // has a matrix by which a player turns or mirrors it
    bool is_rendered = false;
    bool has_mp4_units = false;  // H.264 or HEVC in the form of MP4 and Matroska, which AVI does not take
    bool is_helper = false;      // data that the container's own fields repeat: titles of chapters, time code
};

/** Destinies of a stream of the input. */
enum class StreamFate { Rendered, Copied, LeftOut };

/** A stream of the input and its destiny. */
struct StreamPlan {
    StreamFacts facts;
    StreamFate fate = StreamFate::LeftOut;
    std::string reason;     // why it is left out; else empty
    bool is_noted = false;  // the user may miss it
};

/** Returns the facts of every stream of a file.
 * @param rendered index of the stream that is rendered */
std::vector<StreamFacts> factsOf(const AVFormatContext& file, int rendered);

/** Returns true if the output is a film: the container and the name of the file suit one, the input has a
 * moving picture, and the settings do not ask for audio only. */
bool makesFilm(const std::vector<StreamFacts>& streams, const AVOutputFormat& muxer,
               const OutputSettings& settings);

/** Decides for every stream of the input, in its order, whether the output gets it.
 *
 * A film gets everything that its container can hold, and other audio only if the settings ask for it. An
 * audio
 * file gets the cover art, and other audio likewise.
 * @throw Failure (OutputFormat) if a film would have no moving picture */
std::vector<StreamPlan> planStreams(const std::vector<StreamFacts>& streams, const AVOutputFormat& muxer,
                                    const OutputSettings& settings);

/** Describes a stream of the input: "stream 2 (subtitle, subrip, eng)".
 * @param index in the input, from 0 */
std::string describeStream(const StreamFacts& stream, size_t index);

}  // namespace sonivex_tool
