#include "probe.h"

#include "audio_source.h"
#include "conversion_plan.h"
#include "effect.h"
#include "failure.h"
#include "media_file.h"

namespace sonivex_tool {
namespace {

std::optional<double> seconds(int64_t duration, AVRational time_base) {
    if (duration == AV_NOPTS_VALUE || duration <= 0) return std::nullopt;
    return static_cast<double>(duration) * av_q2d(time_base);
}

std::string tagOf(const AVDictionary* tags, const char* name) {
    const AVDictionaryEntry* tag = av_dict_get(tags, name, nullptr, 0);
    return tag != nullptr ? tag->value : "";
}

std::string kindOf(const AVStream& stream) {
    switch (stream.codecpar->codec_type) {
        case AVMEDIA_TYPE_AUDIO:
            return "audio";
        case AVMEDIA_TYPE_VIDEO:
            return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 ? "cover" : "video";
        case AVMEDIA_TYPE_SUBTITLE:
            return "subtitle";
        case AVMEDIA_TYPE_ATTACHMENT:
            return "attachment";
        default:
            return "data";
    }
}

EffectFit fitOf(const Effect& effect, const AudioSpec& spec) {
    EffectFit fit;
    fit.effect = effect.name;
    try {
        fit.reasons = planConversion(spec, {&effect}, {}).notes;
        fit.kind = fit.reasons.empty() ? EffectFit::Kind::AsItIs : EffectFit::Kind::Converted;
    } catch (const Failure& failure) {
        if (failure.exitCode() != ExitCode::UnsupportedAudio) throw;
        fit.reasons = {failure.what()};
    }
    return fit;
}

// Decodes the first frame, which tells more than the container does.
void probeAudio(const std::string& path, ProbedStream& stream) {
    try {
        const AudioSource source({.path = path, .stream = std::to_string(*stream.audio_number)});
        stream.spec = source.info().spec;
        stream.bits_per_sample = source.info().bits_per_sample;
        stream.start_s = source.info().start_seconds;
        for (const Effect& effect : allEffects()) stream.fits.push_back(fitOf(effect, stream.spec));
        if (!source.info().has_samples) stream.problem = "it has no samples";
    } catch (const Failure& failure) {
        if (failure.exitCode() != ExitCode::NoAudio) throw;
        stream.problem = failure.what();
    }
}

}  // namespace

Probe probeFile(const std::string& path) {
    Probe probe;
    probe.path = path;
    int audio_streams = 0;
    {
        const MediaFile file(path);
        const AVFormatContext& container = file.container();
        probe.container = container.iformat->name;
        probe.length_s = seconds(container.duration, kMicrosecond);
        probe.chapters = static_cast<int>(container.nb_chapters);
        for (unsigned i = 0; i < container.nb_streams; ++i) {
            const AVStream& from = *container.streams[i];
            ProbedStream stream;
            stream.index = static_cast<int>(i);
            stream.kind = kindOf(from);
            stream.codec = avcodec_get_name(from.codecpar->codec_id);
            stream.language = tagOf(from.metadata, "language");
            stream.title = tagOf(from.metadata, "title");
            stream.is_default = (from.disposition & AV_DISPOSITION_DEFAULT) != 0;
            stream.length_s = seconds(from.duration, from.time_base);
            stream.width = from.codecpar->width;
            stream.height = from.codecpar->height;
            if (stream.kind == "audio") stream.audio_number = audio_streams++;
            probe.streams.push_back(stream);
        }
    }
    if (audio_streams == 0) return probe;
    for (ProbedStream& stream : probe.streams) {
        if (stream.audio_number) probeAudio(path, stream);
    }
    try {
        const int chosen = AudioSource({.path = path}).info().stream_number;
        for (ProbedStream& stream : probe.streams) stream.is_chosen = stream.audio_number == chosen;
    } catch (const Failure& failure) {
        if (failure.exitCode() != ExitCode::NoAudio) throw;
    }
    return probe;
}

}  // namespace sonivex_tool
