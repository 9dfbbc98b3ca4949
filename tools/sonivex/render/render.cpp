#include "render.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "audio_sink.h"
#include "audio_source.h"
#include "conditioner.h"
#include "conversion_plan.h"
#include "dump_folder.h"
#include "effect_chain.h"
#include "encoder_plan.h"
#include "failure.h"
#include "interrupt.h"
#include "output_file.h"

namespace sonivex_tool {
namespace {

void checkEffect(const Effect& effect, const FilterSettings& settings, const Vorlin::Plugin& plugin) {
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
}

void checkSettings(const RenderSettings& settings, const Vorlin::Plugin& plugin) {
    for (const Effect* effect : settings.filter.chain) checkEffect(*effect, settings.filter, plugin);
    OutputFile::check(settings.output.path, settings.output.replace);
}

std::string namesOf(const std::vector<const Effect*>& chain) {
    std::string names;
    for (const Effect* effect : chain) names += (names.empty() ? "" : ",") + effect->name;
    return names;
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
    AudioSource source(settings.input);
    const AudioSpec input = source.info().spec;
    const ConversionPlan conversion = planConversion(input, settings.filter.chain, settings.conversion);

    RenderReport report;
    const auto note = [&](const std::string& line) {
        report.notes.push_back(line);
        console.note(line);
    };
    for (const std::string& line : conversion.notes) note(line);
    AudioSpec effect_spec = EffectChain::outputSpec(conversion.work, settings.filter.chain);
    effect_spec.format = input.format;  // of the file, not of the filters: the output keeps its precision
    const EncoderPlan plan = planEncoder(settings.output, effect_spec, source.info().bits_per_sample);
    for (const std::string& line : plan.notes) note(line);

    const auto started = std::chrono::steady_clock::now();
    OutputFile file(settings.output.path, settings.output.replace);
    Destination destination(plan, source, file);
    std::optional<DumpFolder> dumps;
    if (!settings.filter.dump_folder.empty()) dumps.emplace(settings.filter.dump_folder);
    Conditioner conditioner(input, conversion, settings.conversion.dither);
    EffectChain chain(settings.filter, plugin, conversion.work,
                      [&](FramePtr frame) { destination.write(std::move(frame)); });
    if (chain.isBypassed())
        note("the filter bypasses itself at this frame rate and playback speed: the audio stays unchanged");
    console.note(settings.input.path + " -> " + settings.output.path + ", " + namesOf(settings.filter.chain));

    LoudnessMeter meter(input);
    int64_t input_frames = 0;
    const auto push = [&](const FramePtr& frame) {
        if (frame != nullptr) chain.push(*frame);
    };
    while (FramePtr frame = source.read()) {
        throwIfInterrupted();
        input_frames += frame->nb_samples;
        meter.add(*frame);
        push(conditioner.convert(std::move(frame)));
        console.progress(static_cast<double>(input_frames) / input.rate_hz, source.info().length_seconds);
    }
    push(conditioner.flush());
    chain.finish();
    destination.finish();
    throwIfInterrupted();
    file.commit();
    console.clearBar();

    report.elapsed_seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    report.input = {settings.input.path, source.info().container, source.info().codec, input,
                    input_frames,        meter.result()};
    report.output = {settings.output.path, plan.muxer->name,      avcodec_get_name(plan.codec->id), plan.spec,
                     destination.frames(), destination.loudness()};
    report.effect = namesOf(settings.filter.chain);
    report.delay_is_removed = !settings.filter.keep_delay;
    report.decode_errors = source.decodeErrors();
    const ChainCounts counts = chain.counts();
    report.delay_frames = counts.delay_frames;
    report.pushed = counts.pushed;
    report.dropped = counts.dropped;
    report.bypassed = counts.bypassed;
    report.silent_fill_frames = counts.filled_frames;
    report.flushes = counts.flushes;
    if (dumps) {
        report.dumps = dumps->newFiles();
        report.dump_bytes_missing = missingDumpBytes(*dumps, report, settings.filter.call_frames,
                                                     conversion.work.channels(), effect_spec.channels());
    }
    report.dump_folder = settings.filter.dump_folder;
    for (const std::string& line : remarks(report)) note(line);
    return report;
}

}  // namespace sonivex_tool
