#include "output_plan.h"

#include "container_choice.h"
#include "failure.h"

namespace sonivex_tool {

OutputPlan planOutput(const OutputSettings& settings, const AVFormatContext& file, int rendered,
                      const AudioSpec& audio, int bits_per_sample) {
    OutputPlan plan;
    plan.path = settings.path;
    const AVCodecParameters& source = *file.streams[rendered]->codecpar;
    plan.encoder =
        planEncoder(settings, {audio, bits_per_sample, isLossless(source.codec_id, source.profile)});
    plan.notes = plan.encoder.notes;
    const AVOutputFormat& muxer = *plan.encoder.muxer;
    const auto facts = factsOf(file, rendered);
    plan.is_film = makesFilm(facts, muxer, settings);
    plan.is_streamed = goesToStandardOutput(settings);
    if (plan.is_streamed && needsSeeking(muxer)) {
        throw Failure(ExitCode::OutputFormat,
                      std::string("cannot write to standard output: ") + muxer.name +
                          " files need a disk, because their headers state the length");
    }
    plan.streams = planStreams(facts, muxer, settings);
    plan.chapters = holdsChapters(muxer) ? file.nb_chapters : 0;
    for (size_t i = 0; i < plan.streams.size(); ++i) {
        const StreamPlan& stream = plan.streams[i];
        if (stream.is_noted)
            plan.notes.push_back(describeStream(stream.facts, i) + " is left out: " + stream.reason);
        if (stream.facts.is_rotated && stream.fate == StreamFate::Copied && !holdsRotation(muxer))
            plan.notes.push_back(describeStream(stream.facts, i) +
                                 " loses its rotation: libavformat does not write it into " + muxer.name +
                                 " files");
    }
    if (file.nb_chapters > plan.chapters) {
        plan.notes.push_back((file.nb_chapters == 1 ? "the chapter of IN is" : "the chapters of IN are") +
                             std::string(" left out: ") + muxer.name + " files cannot hold " +
                             (file.nb_chapters == 1 ? "it" : "them"));
    }
    return plan;
}

std::vector<bool> wantedPackets(const OutputPlan& plan) {
    std::vector<bool> wanted;
    for (const StreamPlan& stream : plan.streams) {
        wanted.push_back(stream.fate == StreamFate::Copied && !stream.facts.is_picture &&
                         stream.facts.kind != AVMEDIA_TYPE_ATTACHMENT);
    }
    return wanted;
}

}  // namespace sonivex_tool
