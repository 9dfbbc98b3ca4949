#pragma once

#include <string>

#include "av_objects.h"
#include "output_settings.h"

namespace sonivex_tool {

/** Returns true if standard output is the destination: "-" or "pipe:1". */
bool goesToStandardOutput(const OutputSettings& settings);

/** Chooses the muxer from `--format`, or else from the extension of the path. A name without an extension
 * means WAV.
 * @throw Failure (OutputFormat) for an unknown format, one that holds no audio, or an extension of bare
 * samples.
 *     Bare samples need --format. */
const AVOutputFormat* chooseContainer(const OutputSettings& settings);

/** Returns true if a container is meant for films: it holds video, and the file's name does not say that it
 * holds only sound (.m4a, .ogg, .wma, .mka, …). */
bool isForFilms(const AVOutputFormat& muxer, const std::string& path);

/** Returns true if a container holds more than one audio stream. */
bool holdsSeveralStreams(const AVOutputFormat& muxer);

/** Returns true if libavformat can store the codec in the container. */
bool holds(const AVOutputFormat& muxer, AVCodecID codec);

/** Returns true if the container stores cover art of the codec beside its audio. */
bool holdsPicture(const AVOutputFormat& muxer, AVCodecID codec);

/** Returns true if the container stores files such as fonts. */
bool holdsAttachments(const AVOutputFormat& muxer);

/** Returns true if the container stores chapters. */
bool holdsChapters(const AVOutputFormat& muxer);

/** Returns true if libavformat writes the rotation of a video into the container. */
bool holdsRotation(const AVOutputFormat& muxer);

/** Returns true if a file of the container is useless until its beginning is completed at the end, which a
 * pipe
 * does not allow. */
bool needsSeeking(const AVOutputFormat& muxer);

/** Returns true if the caller must delay the blocks of such audio by what its decoder discards at the start.
 *
 * A reader of Matroska subtracts the stated delay from every time. libavformat states it for Opus, and older
 * releases leave the times to their caller. */
bool leavesDelayToCaller(const AVOutputFormat& muxer, AVCodecID codec);

/** Returns true if the muxer is one of those named, separated by single spaces. */
bool isOneOf(const AVOutputFormat& muxer, const std::string& names);

}  // namespace sonivex_tool
