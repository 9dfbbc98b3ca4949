#include "render.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "destination.h"
#include "dump_folder.h"
#include "interrupt.h"
#include "level_plan.h"
#include "loudness_pass.h"
#include "measuring_thread.h"
#include "output.h"
#include "preparation.h"

namespace sonivex_tool {
namespace {

// Returns how many bytes the dump of a render lacks, for example because the disk is full.
uint64_t missingDumpBytes(const DumpFolder& dumps, const ChainCounts& counts) {
    const auto missing = [](uint64_t expected, uint64_t there) {
        return expected - std::min(expected, there);
    };
    return missing(counts.dump_input_bytes, dumps.newBytes(true)) +
           missing(counts.dump_output_bytes, dumps.newBytes(false));
}

void reportSource(RenderReport& report, const AudioSource& source) {
    report.input.format = source.info().container;
    report.input.codec = source.info().codec;
    report.input.spec = source.info().spec;
    report.source = source.info();
    report.timeline = source.timelineReport();
    report.damage = source.damageReport();
}

void reportPass(RenderReport& report, const PassCounts& counts) {
    report.input.frames = counts.input_frames;
    report.samples = counts.samples;
    report.delay_frames = counts.filters.delay_frames;
    report.pushed = counts.filters.pushed;
    report.dropped = counts.filters.dropped;
    report.bypassed = counts.filters.bypassed;
    report.silent_fill_frames = counts.filters.filled_frames;
    report.flushes = counts.filters.flushes;
}

void reportOutput(RenderReport& report, const OutputPlan& plan, const Destination& destination) {
    report.output = {plan.path,         plan.encoder.muxer->name, avcodec_get_name(plan.encoder.codec->id),
                     plan.encoder.spec, destination.frames(),     destination.loudness()};
}

}  // namespace

RenderReport render(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                    Console& console) {
    RenderReport report;
    const auto note = [&](const std::string& line) {
        report.notes.push_back(line);
        console.note(line);
    };
    const auto note_all = [&](const std::vector<std::string>& lines) {
        for (const std::string& line : lines) note(line);
    };
    // The threads of the destination use the file and the preparation, so they must end before both, even if
    // an exception ends the render. So the preparation reaches them by pointers that are set later.
    Destination* taker = nullptr;
    MeasuringThread* input_taker = nullptr;
    Preparation preparation(settings, plugin,
                            {.decoded =
                                 [&](const AVFrame& frame) {
                                     if (input_taker != nullptr) input_taker->add(frame);
                                 },
                             .processed = [&](FramePtr frame) { taker->write(std::move(frame)); },
                             .copied = [&](PacketPtr packet) { taker->copy(std::move(packet)); },
                             .note = note});
    const AudioSource& source = preparation.source();
    const OutputPlan& plan = preparation.output();
    note_all(preparation.notes());
    note_all(plan.notes);

    const auto started = std::chrono::steady_clock::now();
    const auto file = openOutput(settings.output);
    const auto level = fittedLevel(plan.encoder.spec, settings, plugin, console);
    if (level && level->note) note(*level->note);
    Destination destination(
        plan, source.container(), preparation.audioStart_s(), *file,
        {.measure = settings.level.measure, .dither = settings.output.dither, .level = level});
    taker = &destination;
    std::optional<MeasuringThread> input_meter;
    if (settings.level.measure) input_taker = &input_meter.emplace(source.info().spec);
    std::optional<DumpFolder> dumps;
    if (!settings.filter.dump_folder.empty()) dumps.emplace(settings.filter.dump_folder);
    console.note(settings.input.path + " -> " + settings.output.path + ", " + namesOf(settings.filter.chain));

    const PassCounts counts = preparation.pass().run(console);
    destination.finish();
    throwIfInterrupted();
    file->commit();
    console.clearBar();

    report.elapsed_seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    report.input.path = settings.input.path;
    if (input_meter) report.input.loudness = input_meter->finish();
    reportSource(report, source);
    reportPass(report, counts);
    reportOutput(report, plan, destination);
    report.effect = namesOf(settings.filter.chain);
    report.conversions = preparation.pass().conversions();
    report.is_measured = settings.level.measure;
    report.delay_is_removed = !settings.filter.keep_delay;
    report.dump_folder = settings.filter.dump_folder;
    if (dumps) {
        report.dumps = dumps->newFiles();
        report.dump_bytes_missing = missingDumpBytes(*dumps, counts.filters);
    }
    note_all(sentencesOn(settings.input.path, report.timeline, report.damage));
    note_all(notesOn(counts.samples));
    note_all(destination.notes());
    if (level) {
        if (const auto line = levelNote(*level, settings.level, destination.loudness())) note(*line);
    }
    note_all(remarks(report));
    return report;
}

}  // namespace sonivex_tool
