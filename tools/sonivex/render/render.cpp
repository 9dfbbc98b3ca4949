#include "render.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "audio_source.h"
#include "destination.h"
#include "dump_folder.h"
#include "effect_pass.h"
#include "encoder_plan.h"
#include "failure.h"
#include "interrupt.h"
#include "level_plan.h"
#include "loudness_pass.h"
#include "measuring_thread.h"
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

// Returns how many bytes the dump of a render lacks, for example because the disk is full.
uint64_t missingDumpBytes(const DumpFolder& dumps, const ChainCounts& counts) {
    const auto missing = [](uint64_t expected, uint64_t there) {
        return expected - std::min(expected, there);
    };
    return missing(counts.dump_input_bytes, dumps.newBytes(true)) +
           missing(counts.dump_output_bytes, dumps.newBytes(false));
}

}  // namespace

RenderReport render(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                    Console& console) {
    checkSettings(settings, *plugin);
    RenderReport report;
    const auto note = [&](const std::string& line) {
        report.notes.push_back(line);
        console.note(line);
    };
    std::optional<LevelPlan> level;
    if (settings.level.target_lufs) {
        level = planLevel(measureEffects(settings, plugin, console), settings.level);
        if (level->note) note(*level->note);
    }
    AudioSource source(settings.input);
    const AudioSpec input = source.info().spec;
    if (!settings.trim_start) source.insertLeadIn();
    std::optional<Destination> destination;
    std::optional<MeasuringThread> input_meter;
    EffectPass pass(settings, plugin, source,
                    {.decoded =
                         [&](const AVFrame& frame) {
                             if (input_meter) input_meter->add(frame);
                         },
                     .processed = [&](FramePtr frame) { destination->write(std::move(frame)); },
                     .copied = [](const PacketPtr&) {},
                     .note = note});
    if (pass.isBypassed()) {
        throw Failure(ExitCode::Usage,
                      "the filter processes nothing at this video: --fps times --speed, both cut to whole "
                      "numbers, must be below 62");
    }
    for (const std::string& line : sentencesOn(settings.input.path, source.info())) note(line);
    for (const std::string& line : pass.conversion().notes) note(line);

    AudioSpec output = pass.outputSpec();
    output.format = input.format;  // of the file, not of the effects: the output keeps its precision
    const EncoderPlan plan = planEncoder(settings.output, output, source.info().bits_per_sample);
    for (const std::string& line : plan.notes) note(line);

    const auto started = std::chrono::steady_clock::now();
    if (level) fitLimiter(*level, plan.spec, settings, plugin, console);
    OutputFile file(settings.output.path, settings.output.replace);
    destination.emplace(
        plan, source, file,
        DestinationSettings{
            .measure = settings.level.measure, .dither = settings.output.dither, .level = level});
    if (settings.level.measure) input_meter.emplace(input);
    std::optional<DumpFolder> dumps;
    if (!settings.filter.dump_folder.empty()) dumps.emplace(settings.filter.dump_folder);
    console.note(settings.input.path + " -> " + settings.output.path + ", " + namesOf(settings.filter.chain));

    const PassCounts counts = pass.run(console);
    destination->finish();
    throwIfInterrupted();
    file.commit();
    console.clearBar();

    report.elapsed_seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    report.input = {settings.input.path, source.info().container,
                    source.info().codec, input,
                    counts.input_frames, input_meter ? input_meter->finish() : Loudness()};
    report.output = {
        settings.output.path,  plan.muxer->name,       avcodec_get_name(plan.codec->id), plan.spec,
        destination->frames(), destination->loudness()};
    report.effect = namesOf(settings.filter.chain);
    report.delay_is_removed = !settings.filter.keep_delay;
    report.source = source.info();
    report.timeline = source.timelineReport();
    report.damage = source.damageReport();
    report.conversions = pass.conversion().notes;
    report.samples = counts.samples;
    report.delay_frames = counts.filters.delay_frames;
    report.pushed = counts.filters.pushed;
    report.dropped = counts.filters.dropped;
    report.bypassed = counts.filters.bypassed;
    report.silent_fill_frames = counts.filters.filled_frames;
    report.flushes = counts.filters.flushes;
    if (dumps) {
        report.dumps = dumps->newFiles();
        report.dump_bytes_missing = missingDumpBytes(*dumps, counts.filters);
    }
    report.dump_folder = settings.filter.dump_folder;
    for (const std::string& line : sentencesOn(settings.input.path, report.timeline, report.damage))
        note(line);
    for (const std::string& line : notesOn(counts.samples)) note(line);
    if (level) {
        if (const auto line = levelNote(*level, settings.level, destination->loudness())) note(*line);
    }
    for (const std::string& line : remarks(report)) note(line);
    return report;
}

}  // namespace sonivex_tool
