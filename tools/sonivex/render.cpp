#include "render.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "audio_sink.h"
#include "audio_source.h"
#include "dump_folder.h"
#include "encoder_plan.h"
#include "failure.h"
#include "filter_run.h"
#include "interrupt.h"
#include "output_file.h"
#include "reframer.h"
#include "response_tail.h"

namespace sonivex_tool {
namespace {

/** What the filter makes of the input: the effect may change the channels, nothing else changes. */
AudioSpec filteredSpec(const AudioSpec& input, const Effect& effect) {
    AudioSpec spec = input;
    if (effect.outputChannels) spec.layout = defaultLayout(*effect.outputChannels);
    return spec;
}

void checkSettings(const RenderSettings& settings, const Vorlin::Plugin& plugin) {
    const Effect& effect = *settings.effect;
    if (!plugin.exports(effect.exportedFunction.c_str())) {
        throw Failure(ExitCode::EffectMissing, "the plug-in does not have " + effect.title + " yet");
    }
    if (!effectDelayFrames(effect, settings.callFrames)) {
        throw Failure(ExitCode::Usage, "--frame-size " + std::to_string(settings.callFrames) +
                                           " would tear holes into the output: " + effect.title +
                                           " works in blocks of " + std::to_string(effect.blockFrames) +
                                           " frames");
    }
    if (settings.threaded && settings.callFrames < kShortestThreadedCallFrames) {
        throw Failure(ExitCode::Usage, "--threaded needs a --frame-size of at least " +
                                           std::to_string(kShortestThreadedCallFrames));
    }
    OutputFile::check(settings.output, settings.replaceOutput);
}

/** From the filter to the file: converts to what the encoder takes, measures, encodes. */
class Destination {
  public:
    Destination(const EncoderPlan& plan, const AudioSource& source, OutputFile& file)
        : mConverter(plan.spec), mMeter(plan.spec), mSink(plan, source, file) {}

    void write(FramePtr frame) { writeConverted(mConverter.convert(std::move(frame))); }

    void finish() {
        writeConverted(mConverter.flush());
        mSink.finish();
    }

    int64_t frames() const { return mFrames; }
    Loudness loudness() const { return mMeter.result(); }

  private:
    void writeConverted(const FramePtr& frame) {
        if (frame == nullptr) return;
        mFrames += frame->nb_samples;
        mMeter.add(*frame);
        mSink.write(*frame);
    }

    FormatConverter mConverter;
    LoudnessMeter mMeter;
    AudioSink mSink;
    int64_t mFrames = 0;
};

/** Push whole calls out of what waits. */
void pushCalls(Reframer& waiting, FilterRun& filter, int callFrames) {
    while (waiting.size() >= callFrames) filter.push(waiting.take(callFrames));
}

/** Pad the last call with silence, and drive out with more of it what the filter still holds and
 * the `tailFrames` for which its effect sounds on. */
void pushTail(Reframer& waiting, FilterRun& filter, int64_t tailFrames, int callFrames) {
    const int64_t rest = waiting.size() + tailFrames + filter.delayFrames();
    const int64_t calls = (rest + callFrames - 1) / callFrames;
    int64_t silence = calls * callFrames - waiting.size();
    while (silence > 0) {
        const int piece = static_cast<int>(std::min<int64_t>(silence, callFrames));
        waiting.appendSilence(piece);
        silence -= piece;
        pushCalls(waiting, filter, callFrames);
    }
    pushCalls(waiting, filter, callFrames);
}

/** What the dump of a render lacks, as when the disk is full: both sides of the effect hold every call that
 * was neither given up nor passed on untouched. */
uint64_t missingDumpBytes(const DumpFolder& dumps, const RenderReport& report, int callFrames,
                          int inputChannels, int outputChannels) {
    const uint64_t unseen = std::min(report.dropped + report.bypassed, report.pushed);
    const uint64_t sampleBytes =
        (report.pushed - unseen) * static_cast<uint64_t>(callFrames) * sizeof(int16_t);
    const auto missing = [&](bool isInput, int channels) {
        const uint64_t expected = sampleBytes * static_cast<uint64_t>(channels);
        return expected - std::min(expected, dumps.newBytes(isInput));
    };
    return missing(true, inputChannels) + missing(false, outputChannels);
}

}  // namespace

RenderReport render(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                    Console& console) {
    checkSettings(settings, *plugin);
    const Effect& effect = *settings.effect;
    AudioSource source(settings.input, settings.streamNumber);
    const AudioSpec input = source.info().spec;
    const std::string reason = whyUnsupported(effect, input.channels(), input.rateHz);
    if (!reason.empty()) throw Failure(ExitCode::UnsupportedAudio, settings.input + ": " + reason);

    RenderReport report;
    const auto note = [&](const std::string& line) {
        report.notes.push_back(line);
        console.note(line);
    };
    const EncoderPlan plan =
        planEncoder(settings.output, filteredSpec(input, effect), source.info().bitsPerSample);
    for (const std::string& line : plan.notes) note(line);

    const auto started = std::chrono::steady_clock::now();
    OutputFile file(settings.output, settings.replaceOutput);
    Destination destination(plan, source, file);
    std::optional<DumpFolder> dumps;
    if (!settings.dumpFolder.empty()) dumps.emplace(settings.dumpFolder);
    FilterRun filter(settings, plugin, input, [&](FramePtr frame) { destination.write(std::move(frame)); });
    if (filter.isBypassed()) note("the filter stands aside at this frame rate and speed: nothing is changed");
    console.note(settings.input + " -> " + settings.output + ", " + effect.name);

    LoudnessMeter meter(input);
    Reframer waiting(input);
    int64_t inputFrames = 0;
    while (const FramePtr frame = source.read()) {
        throwIfInterrupted();
        inputFrames += frame->nb_samples;
        meter.add(*frame);
        waiting.append(*frame);
        pushCalls(waiting, filter, settings.callFrames);
        console.progress(static_cast<double>(inputFrames) / input.rateHz, source.info().lengthSeconds);
    }
    const int64_t tail = settings.keepTail && !filter.isBypassed()
                             ? responseTailFrames(effect, settings.options, input.channels())
                             : 0;
    filter.setEnd(inputFrames + tail + (settings.keepDelay ? filter.delayFrames() : 0));
    pushTail(waiting, filter, tail, settings.callFrames);
    filter.finish();
    destination.finish();
    throwIfInterrupted();
    file.commit();
    console.clearBar();

    report.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    report.input = {settings.input, source.info().container, source.info().codec, input,
                    inputFrames,    meter.result()};
    report.output = {settings.output, plan.muxer->name,     avcodec_get_name(plan.codec->id),
                     plan.spec,       destination.frames(), destination.loudness()};
    report.effect = effect.name;
    report.delayFrames = filter.delayFrames();
    report.delayIsRemoved = !settings.keepDelay;
    report.decodeErrors = source.decodeErrors();
    report.pushed = filter.counts().pushed;
    report.dropped = filter.counts().dropped;
    report.bypassed = filter.counts().bypassed;
    report.silentFillFrames = filter.filledFrames();
    report.flushes = filter.counts().flushes;
    if (dumps) {
        report.dumps = dumps->newFiles();
        report.dumpBytesMissing = missingDumpBytes(*dumps, report, settings.callFrames, input.channels(),
                                                   filteredSpec(input, effect).channels());
    }
    report.dumpFolder = settings.dumpFolder;
    for (const std::string& line : remarks(report)) note(line);
    return report;
}

}  // namespace sonivex_tool
