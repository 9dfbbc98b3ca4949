#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "console.h"
#include "grey_image.h"
#include "loudness.h"
#include "loudness_curve.h"
#include "measured_sets.h"
#include "presence_meter.h"
#include "report_settings.h"
#include "source_info.h"
#include "source_report.h"
#include "vorlin/plugin.h"
#include "waveform.h"

namespace sonivex_tool {

/** A change of the filters between processing and passing everything through. */
struct GuardEvent {
    double time_s = 0.0;  // in the input
    bool is_bypassed = false;
};

/** One version of the sound, measured. */
struct MeasuredVersion {
    std::string title;      // "original", or the effects and their settings
    std::string file_name;  // for pictures
    std::string choice;     // as on the command line; empty for the original
    AudioSpec spec;
    int64_t frames = 0;  // at the AudioSpec's rate
    LoudnessCurve loudness;
    std::vector<Extent> waveform;  // of the stereo sound that is heard
    double stretch_s = 0.0;        // length of each extent
    sonivex_plotting::GreyImage spectrogram;
    double column_s = 0.0;                  // length of each column
    std::vector<PresenceReading> presence;  // of dialogue enhancement alone; else empty
    std::vector<MeasuredSet> responses;     // of surround; else empty
    std::vector<std::string> conversions;   // for the effects
    uint64_t calls = 0;
    uint64_t dropped_calls = 0;
    uint64_t bypassed_calls = 0;
    std::vector<GuardEvent> guard_events;
    std::string opus;               // the file in the page; empty: no sound
    Loudness heard;                 // loudness and true peak of the stretch that is heard, in stereo
    double matching_gain_db = 0.0;  // of the player

    double length_s() const { return static_cast<double>(frames) / spec.rate_hz; }
};

/** Everything that a report shows. */
struct MeasuredReport {
    std::string input;  // path
    SourceInfo source;
    TimelineReport timeline;
    DamageReport damage;
    std::vector<MeasuredVersion> versions;  // the original first
    SoundPlan sound;
    bool has_sound = false;
    std::string why_silent;          // a sentence, if the page has no sound
    std::vector<std::string> notes;  // for the user, sentences
};

/** Runs a file through each chain of effects as `render` does, and measures the original and the results.
 *  It reads the file once for each version, and once more for the sound of the original. It holds no sound
 *  in memory but what the page plays, encoded.
 *  @throw Failure, std::bad_alloc */
MeasuredReport measureReport(const ReportSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                             Console& console);

/** Sets the gains by which all versions are heard at the loudness of the softest one, and by which none has
 *  a true peak above -1 dBTP. A version without measurable loudness keeps the gain that they need together.
 *  */
void matchLoudness(std::vector<MeasuredVersion>& versions);

}  // namespace sonivex_tool
