#include "measured_report.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "audio_source.h"
#include "effect_pass.h"
#include "failure.h"
#include "interrupt.h"
#include "odd_samples.h"
#include "responses_tables.h"
#include "sound_measurement.h"

namespace sonivex_tool {
namespace {

constexpr double kHighestPeak_db = -1.0;  // true peak

void requireFile(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error) || !std::filesystem::exists(path, error)) return;
    throw Failure(ExitCode::Usage, "report reads IN more than once, so IN must be a file: \"" + path + "\"");
}

void requireEffect(const Effect& effect, const Vorlin::Plugin& plugin) {
    if (!plugin.exports(effect.exported_function.c_str()))
        throw Failure(ExitCode::EffectMissing, "the plug-in does not have " + effect.title);
}

// Reads the whole file in the AudioSpec with which it begins.
void readAll(AudioSource& source, Console& console, const std::function<void(const AVFrame&)>& take) {
    double seconds = 0.0;
    while (FramePtr frame = source.read()) {
        throwIfInterrupted();
        silenceNonFinite(frame);
        seconds += static_cast<double>(frame->nb_samples) / frame->sample_rate;
        console.progress(seconds, source.info().length_seconds);
        take(*frame);
    }
}

MeasuredVersion measureOriginal(MeasuredReport& report, const InputSettings& input, Console& console) {
    AudioSource source(input);
    source.insertLeadIn();
    SoundMeasurement measurement(source.info().spec, nullptr);
    readAll(source, console, [&](const AVFrame& frame) { measurement.add(frame); });
    MeasuredVersion original;
    original.title = original.file_name = "original";
    measurement.finish(original);
    report.source = source.info();
    report.timeline = source.timelineReport();
    report.damage = source.damageReport();
    return original;
}

void encodeOriginal(MeasuredVersion& original, const SoundPlan& plan, const InputSettings& input,
                    Console& console) {
    AudioSource source(input);
    source.insertLeadIn();
    HeardSound heard(plan);
    readAll(source, console, [&](const AVFrame& frame) { heard.add(frame); });
    heard.finish(original);
}

// Returns the responses that surround uses for a chain that gets so many channels.
std::vector<MeasuredSet> responsesOf(const VersionChoice& choice, int channels) {
    const bool has_surround = std::any_of(choice.chain.begin(), choice.chain.end(),
                                          [](const Effect* effect) { return effect->name == "surround"; });
    if (!has_surround) return {};
    const std::string layout = channels > 6 ? "7.1" : channels > 2 ? "5.1" : "2.0";
    std::string name = layout == "2.0" ? "cingo" : "bingo-" + layout;
    if (choice.options.surround_type == "MegaBass")
        name = layout + "-mode" + std::to_string(choice.options.surround_mode.value_or(1));
    const ResponseSet* set = findResponseSet(name);
    if (set == nullptr) return {};
    return measureSets({.sets = {set}, .source = std::nullopt});
}

/** Runs the file through one chain of effects. */
class VersionRun {
  public:
    VersionRun(const ReportSettings& settings, const VersionChoice& choice,
               const std::shared_ptr<Vorlin::Plugin>& plugin, const std::optional<SoundPlan>& sound)
        : source_(settings.input),
          to_stereo_(heardSpec()),
          presence_(kPageRate_hz),
          measures_presence_(choice.chain.size() == 1 && choice.chain.front()->name == "dialogue"),
          pass_(settingsOf(settings, choice), plugin, source_,
                {.decoded = [this](const AVFrame& frame) { takeInput(frame); },
                 .processed = [this](const FramePtr& frame) { takeOutput(*frame); },
                 .copied = [](const PacketPtr&) {},
                 .note = [this](const std::string& line) { version_.conversions.push_back(line); }}),
          measurement_(pass_.outputSpec(), measures_presence_ ? &presence_ : nullptr) {
        source_.insertLeadIn();
        version_.title = titleOf(choice);
        version_.file_name = fileNameOf(choice);
        version_.choice = choice.text;
        // Other effects of the chain may need a conversion, so surround may get other channels than the
        // file's.
        version_.responses = responsesOf(choice, pass_.workSpec().channels());
        if (sound) heard_.emplace(*sound);
        noteGuard();
    }

    MeasuredVersion run(Console& console) {
        const PassCounts counts = pass_.run(console);
        noteGuard();
        version_.conversions.insert(version_.conversions.begin(), pass_.conversions().begin(),
                                    pass_.conversions().end());
        version_.calls = counts.filters.pushed;
        version_.dropped_calls = counts.filters.dropped;
        version_.bypassed_calls = counts.filters.bypassed;
        measurement_.finish(version_);
        if (measures_presence_) version_.presence = presence_.readings();
        if (heard_) heard_->finish(version_);
        return std::move(version_);
    }

  private:
    static RenderSettings settingsOf(const ReportSettings& settings, const VersionChoice& choice) {
        RenderSettings render;
        render.input = settings.input;
        render.filter.chain = choice.chain;
        render.filter.options = choice.options;
        render.filter.video_fps = settings.video_fps;
        render.filter.playback_speed = settings.playback_speed;
        return render;
    }

    void takeInput(const AVFrame& frame) {
        noteGuard();
        seconds_ += static_cast<double>(frame.nb_samples) / frame.sample_rate;
        if (!measures_presence_) return;
        const FramePtr stereo = to_stereo_.convert(FramePtr(allocated(av_frame_clone(&frame))));
        if (stereo == nullptr) return;
        presence_.addInput({reinterpret_cast<const float*>(stereo->extended_data[0]),
                            2 * static_cast<std::size_t>(stereo->nb_samples)});
    }

    void takeOutput(const AVFrame& frame) {
        measurement_.add(frame);
        if (heard_) heard_->add(frame);
    }

    void noteGuard() {
        if (pass_.isBypassed() == is_bypassed_) return;
        is_bypassed_ = !is_bypassed_;
        version_.guard_events.push_back({seconds_, is_bypassed_});
    }

    AudioSource source_;
    FormatConverter to_stereo_;
    PresenceMeter presence_;
    bool measures_presence_;
    EffectPass pass_;
    SoundMeasurement measurement_;
    std::optional<HeardSound> heard_;
    MeasuredVersion version_;
    double seconds_ = 0.0;
    bool is_bypassed_ = false;
};

std::vector<VersionChoice> chosenVersions(const ReportSettings& settings, const AudioSpec& spec,
                                          std::vector<std::string>& notes) {
    if (!settings.versions.empty()) return settings.versions;
    std::vector<VersionChoice> versions;
    for (const std::string& name : effectNames()) {
        const Effect& effect = *findEffect(name);
        const bool takes_channels = std::find(effect.channels.begin(), effect.channels.end(),
                                              spec.channels()) != effect.channels.end();
        if (takes_channels) {
            versions.push_back(parseVersion(name));
        } else {
            notes.push_back(effect.title + " is left out, because it does not process " +
                            std::to_string(spec.channels()) + " channels; --effect " + name +
                            " converts the sound for it");
        }
    }
    if (versions.empty()) versions.push_back(parseVersion(effectNames().front()));
    return versions;
}

std::string describeExcerpt(const SoundPlan& plan, double length_s) {
    return "the players hold an excerpt of " + clockTime(plan.length_s) + " from " + clockTime(plan.start_s) +
           " of " + clockTime(length_s) + "; the pictures and figures are of the whole sound";
}

}  // namespace

void matchLoudness(std::vector<MeasuredVersion>& versions) {
    std::optional<double> softest_lufs;
    for (const MeasuredVersion& version : versions) {
        const auto& lufs = version.heard.integrated_lufs;
        if (lufs && (!softest_lufs || *lufs < *softest_lufs)) softest_lufs = lufs;
    }
    double excess_db = 0.0;
    for (MeasuredVersion& version : versions) {
        const auto& lufs = version.heard.integrated_lufs;
        version.matching_gain_db = lufs ? *softest_lufs - *lufs : 0.0;
        if (const auto& peak = version.heard.true_peak_dbtp)
            excess_db = std::max(excess_db, *peak + version.matching_gain_db - kHighestPeak_db);
    }
    for (MeasuredVersion& version : versions) version.matching_gain_db -= excess_db;
}

MeasuredReport measureReport(const ReportSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                             Console& console) {
    requireFile(settings.input.path);
    for (const VersionChoice& choice : settings.versions) {
        for (const Effect* effect : choice.chain) requireEffect(*effect, *plugin);
    }
    MeasuredReport report;
    report.input = settings.input.path;
    console.note(settings.input.path + ": original");
    report.versions.push_back(measureOriginal(report, settings.input, console));
    const double length_s = report.versions.front().length_s();
    const AudioSpec spec = report.versions.front().spec;
    const auto choices = chosenVersions(settings, spec, report.notes);
    for (const VersionChoice& choice : choices) {
        for (const Effect* effect : choice.chain) requireEffect(*effect, *plugin);
    }
    report.sound = planSound(length_s, static_cast<int>(choices.size()) + 1, settings.stretch);
    const bool is_wanted = settings.has_sound && !settings.page.empty();
    report.has_sound = is_wanted && hasOpusEncoder() && report.sound.length_s > 0.0;
    if (!settings.has_sound) {
        report.why_silent = "The players were left out by --no-sound.";
    } else if (!hasOpusEncoder()) {
        report.why_silent = "The players are left out, because this build of FFmpeg has no encoder of Opus.";
    } else if (report.sound.length_s <= 0.0) {
        report.why_silent = "There is no sound to play.";
    }
    const std::optional<SoundPlan> sound = report.has_sound ? std::optional(report.sound) : std::nullopt;
    if (sound) {
        if (sound->is_excerpt) report.notes.push_back(describeExcerpt(*sound, length_s));
        encodeOriginal(report.versions.front(), *sound, settings.input, console);
    }
    for (const VersionChoice& choice : choices) {
        console.note(settings.input.path + ": " + titleOf(choice));
        VersionRun run(settings, choice, plugin, sound);
        report.versions.push_back(run.run(console));
    }
    matchLoudness(report.versions);
    for (const auto& lines : {sentencesOn(settings.input.path, report.source),
                              sentencesOn(settings.input.path, report.timeline, report.damage)})
        report.notes.insert(report.notes.end(), lines.begin(), lines.end());
    for (const std::string& line : report.notes) console.note(line);
    console.clearBar();
    return report;
}

}  // namespace sonivex_tool
