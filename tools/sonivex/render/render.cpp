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

// Returns the AudioSpec of the filter's output. The effect may change the channel count, nothing else.
AudioSpec filteredSpec(const AudioSpec& input, const Effect& effect) {
    AudioSpec spec = input;
    if (effect.output_channels) spec.layout = defaultLayout(*effect.output_channels);
    return spec;
}

void checkSettings(const RenderSettings& settings, const Vorlin::Plugin& plugin) {
    const Effect& effect = *settings.effect;
    if (!plugin.exports(effect.exported_function.c_str())) {
        throw Failure(ExitCode::EffectMissing,
                      "the plug-in does not have " + effect.title + "; choose another --effect or --plugin");
    }
    if (!effectDelayFrames(effect, settings.call_frames)) {
        throw Failure(ExitCode::Usage, "--frame-size " + std::to_string(settings.call_frames) +
                                           " would leave silent gaps in the output of " + effect.title +
                                           "; choose a divisor or a multiple of " +
                                           std::to_string(effect.block_frames));
    }
    if (settings.threaded && settings.call_frames < kShortestThreadedCallFrames) {
        throw Failure(ExitCode::Usage, "--threaded needs a --frame-size of at least " +
                                           std::to_string(kShortestThreadedCallFrames));
    }
    OutputFile::check(settings.output, settings.replace_output);
}

// Converts the filter's output to the encoder's format, measures its loudness, and encodes it into the file.
class Destination {
  public:
    Destination(const EncoderPlan& plan, const AudioSource& source, OutputFile& file)
        : converter_(plan.spec), meter_(plan.spec), sink_(plan, source, file) {}

    void write(FramePtr frame) { writeConverted(converter_.convert(std::move(frame))); }

    void finish() {
        writeConverted(converter_.flush());
        sink_.finish();
    }

    int64_t frames() const { return frames_; }
    Loudness loudness() const { return meter_.result(); }

  private:
    void writeConverted(const FramePtr& frame) {
        if (frame == nullptr) return;
        frames_ += frame->nb_samples;
        meter_.add(*frame);
        sink_.write(*frame);
    }

    FormatConverter converter_;
    LoudnessMeter meter_;
    AudioSink sink_;
    int64_t frames_ = 0;
};

// Pushes the waiting frames as far as they fill whole calls.
void pushCalls(Reframer& waiting, FilterRun& filter, int call_frames) {
    while (waiting.size() >= call_frames) filter.push(waiting.take(call_frames));
}

// Pads the last call with silence. Pushes enough further silence to drive out the frames that the filter
// still holds and the `tail_frames` for which the effect keeps sounding.
void pushTail(Reframer& waiting, FilterRun& filter, int64_t tail_frames, int call_frames) {
    const int64_t rest = waiting.size() + tail_frames + filter.delayFrames();
    const int64_t calls = (rest + call_frames - 1) / call_frames;
    int64_t silence = calls * call_frames - waiting.size();
    while (silence > 0) {
        const int piece = static_cast<int>(std::min<int64_t>(silence, call_frames));
        waiting.appendSilence(piece);
        silence -= piece;
        pushCalls(waiting, filter, call_frames);
    }
    pushCalls(waiting, filter, call_frames);
}

// Returns how many bytes the dump of a render lacks, for example because the disk is full. The dumps of both
// sides of the effect should hold every call that was neither dropped nor passed through untouched.
uint64_t missingDumpBytes(const DumpFolder& dumps, const RenderReport& report, int call_frames,
                          int input_channels, int output_channels) {
    const uint64_t unseen = std::min(report.dropped + report.bypassed, report.pushed);
    const uint64_t sample_bytes =
        (report.pushed - unseen) * static_cast<uint64_t>(call_frames) * sizeof(int16_t);
    const auto missing = [&](bool is_input, int channels) {
        const uint64_t expected = sample_bytes * static_cast<uint64_t>(channels);
        return expected - std::min(expected, dumps.newBytes(is_input));
    };
    return missing(true, input_channels) + missing(false, output_channels);
}

}  // namespace

RenderReport render(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                    Console& console) {
    checkSettings(settings, *plugin);
    const Effect& effect = *settings.effect;
    AudioSource source(settings.input, settings.stream_number);
    const AudioSpec input = source.info().spec;
    const std::string reason = whyUnsupported(effect, input.channels(), input.rate_hz);
    if (!reason.empty())
        throw Failure(ExitCode::UnsupportedAudio, "cannot render \"" + settings.input + "\": " + reason);

    RenderReport report;
    const auto note = [&](const std::string& line) {
        report.notes.push_back(line);
        console.note(line);
    };
    const EncoderPlan plan =
        planEncoder(settings.output, filteredSpec(input, effect), source.info().bits_per_sample);
    for (const std::string& line : plan.notes) note(line);

    const auto started = std::chrono::steady_clock::now();
    OutputFile file(settings.output, settings.replace_output);
    Destination destination(plan, source, file);
    std::optional<DumpFolder> dumps;
    if (!settings.dump_folder.empty()) dumps.emplace(settings.dump_folder);
    FilterRun filter(settings, plugin, input, [&](FramePtr frame) { destination.write(std::move(frame)); });
    if (filter.isBypassed())
        note("the filter bypasses itself at this frame rate and playback speed: the audio stays unchanged");
    console.note(settings.input + " -> " + settings.output + ", " + effect.name);

    LoudnessMeter meter(input);
    Reframer waiting(input);
    int64_t input_frames = 0;
    while (const FramePtr frame = source.read()) {
        throwIfInterrupted();
        input_frames += frame->nb_samples;
        meter.add(*frame);
        waiting.append(*frame);
        pushCalls(waiting, filter, settings.call_frames);
        console.progress(static_cast<double>(input_frames) / input.rate_hz, source.info().length_seconds);
    }
    const int64_t tail = settings.keep_tail && !filter.isBypassed()
                             ? responseTailFrames(effect, settings.options, input.channels())
                             : 0;
    filter.setEnd(input_frames + tail + (settings.keep_delay ? filter.delayFrames() : 0));
    pushTail(waiting, filter, tail, settings.call_frames);
    filter.finish();
    destination.finish();
    throwIfInterrupted();
    file.commit();
    console.clearBar();

    report.elapsed_seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    report.input = {settings.input, source.info().container, source.info().codec, input,
                    input_frames,   meter.result()};
    report.output = {settings.output, plan.muxer->name,     avcodec_get_name(plan.codec->id),
                     plan.spec,       destination.frames(), destination.loudness()};
    report.effect = effect.name;
    report.delay_frames = filter.delayFrames();
    report.delay_is_removed = !settings.keep_delay;
    report.decode_errors = source.decodeErrors();
    report.pushed = filter.counts().pushed;
    report.dropped = filter.counts().dropped;
    report.bypassed = filter.counts().bypassed;
    report.silent_fill_frames = filter.filledFrames();
    report.flushes = filter.counts().flushes;
    if (dumps) {
        report.dumps = dumps->newFiles();
        report.dump_bytes_missing = missingDumpBytes(*dumps, report, settings.call_frames, input.channels(),
                                                     filteredSpec(input, effect).channels());
    }
    report.dump_folder = settings.dump_folder;
    for (const std::string& line : remarks(report)) note(line);
    return report;
}

}  // namespace sonivex_tool
