#pragma once

#include <string>
#include <vector>

#include "encoder_plan.h"
#include "stream_plan.h"

namespace sonivex_tool {

/** Everything that is decided about an output before it is opened. */
struct OutputPlan {
    std::string path;  // as the user typed it
    EncoderPlan encoder;
    std::vector<StreamPlan> streams;  // one for each stream of the input, in its order
    bool is_film = false;             // the output keeps the film's clock
    bool is_streamed = false;         // the output cannot be sought: it is a pipe
    unsigned chapters = 0;            // that are copied
    std::vector<std::string> notes;   // for the user, one line each
};

/** Decides how the output is made from a file whose audio has gone through the effects. Nothing is opened.
 *
 * @param file the opened input, and `rendered` the index of its stream that is rendered
 * @param audio spec and bits of the audio to encode
 * @throw Failure (OutputFormat) */
OutputPlan planOutput(const OutputSettings& settings, const AVFormatContext& file, int rendered,
                      const AudioSpec& audio, int bits_per_sample);

/** Returns for every stream of the input whether its packets are to be given to `MediaSink::copy`. Cover art
 * and
 * attachments are not among them, since they have no packets of their own. */
std::vector<bool> wantedPackets(const OutputPlan& plan);

/** Describes the plan for people, one line for each string. */
std::vector<std::string> describe(const OutputPlan& plan);

/** Describes the plan for programs, as one JSON object on one line without a newline. */
std::string planAsJson(const OutputPlan& plan);

}  // namespace sonivex_tool
