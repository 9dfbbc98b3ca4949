#include "commands.h"

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "audio_source.h"
#include "damaged_inputs.h"
#include "failure.h"
#include "format_converter.h"
#include "interrupt.h"
#include "result_stream.h"
#include "speech_shift.h"

namespace sonivex_tool {
namespace {

constexpr char kSpeechFooter[] =
    "All three files are stereo and have the same sample rate. SPEECH and BACKGROUND begin at the same\n"
    "instant. OUT may be shifted by up to half a second. A least-squares fit finds how much of SPEECH and "
    "of\n"
    "BACKGROUND is in OUT, in third-octave bands from 200 to 4000 Hz and segments of 100 ms.\n"
    "The exit codes are those of `sonivex render`.\n";
constexpr int kLowestSpeechRate_hz = 500;

struct SpeechChoices {
    std::string speech;
    std::string background;
    std::string output;
    bool json = false;
};

struct Stereo {
    int rate_hz = 0;
    std::vector<float> samples;  // interleaved
    DamageReport damage;
};

Stereo readStereo(const std::string& path) {
    AudioSource source({.path = path});
    AudioSpec spec = source.info().spec;
    if (spec.channels() != 2) {
        throw Failure(ExitCode::UnsupportedAudio,
                      "cannot measure \"" + path +
                          "\": it is not stereo (channels: " + std::to_string(spec.channels()) + ")");
    }
    spec.format = AV_SAMPLE_FMT_FLT;
    FormatConverter converter(spec);
    Stereo stereo;
    stereo.rate_hz = spec.rate_hz;
    const auto append = [&](const FramePtr& frame) {
        if (frame == nullptr) return;
        const auto* samples = reinterpret_cast<const float*>(frame->extended_data[0]);
        stereo.samples.insert(stereo.samples.end(), samples, samples + ptrdiff_t{2} * frame->nb_samples);
    };
    while (FramePtr frame = source.read()) {
        throwIfInterrupted();
        append(converter.convert(std::move(frame)));
    }
    append(converter.flush());
    stereo.damage = source.damageReport();
    const auto is_finite = [](float sample) { return std::isfinite(sample); };
    if (!std::all_of(stereo.samples.begin(), stereo.samples.end(), is_finite))
        throw Failure(ExitCode::NoAudio,
                      "cannot measure \"" + path + "\": it contains NaN or infinite samples");
    return stereo;
}

std::string textOf(const AlignedSpeech& aligned, int rate_hz) {
    const SpeechRatio& ratio = aligned.ratio;
    const double shift_ms = 1000.0 * static_cast<double>(aligned.shift_frames) / rate_hz;
    std::array<char, 240> text{};
    (void)std::snprintf(text.data(), text.size(),
                        "Speech-to-background ratio  %.1f dB -> %.1f dB  (%+.1f dB)\n"
                        "Shift of OUT                %lld samples (%.2f ms)\n",
                        ratio.before_db, ratio.after_db, ratio.rise_db(),
                        static_cast<long long>(aligned.shift_frames), shift_ms);
    return text.data();
}

std::string jsonOf(const AlignedSpeech& aligned, bool is_damaged) {
    const SpeechRatio& ratio = aligned.ratio;
    const nlohmann::ordered_json object = {{"segments", ratio.segments},
                                           {"before_db", ratio.before_db},
                                           {"after_db", ratio.after_db},
                                           {"rise_db", ratio.rise_db()},
                                           {"shift_samples", aligned.shift_frames},
                                           {"unexplained", ratio.unexplained},
                                           {"speech_share", ratio.speech_share},
                                           {"background_share", ratio.background_share},
                                           {"damaged", is_damaged}};
    return object.dump() + "\n";
}

// Throws if too much of the output is neither speech nor background for the ratio to be meaningful.
void throwUnlessExplained(const AlignedSpeech& aligned, const std::string& path) {
    if (aligned.isExplained()) return;
    const SpeechRatio& ratio = aligned.ratio;
    const char* weaker = ratio.speech_share < ratio.background_share ? "speech" : "background";
    std::array<char, 160> reason{};
    (void)std::snprintf(reason.data(), reason.size(),
                        "%.1f %% of its power is neither speech nor background, and %.1f %% is %s",
                        100.0 * ratio.unexplained, 100.0 * aligned.weakerShare(), weaker);
    throw Failure(ExitCode::UnsupportedAudio,
                  "cannot explain \"" + path + "\": " + reason.data() + "; are these the right files?");
}

void run(const SpeechChoices& choices) {
    installSignalHandlers();
    av_log_set_level(AV_LOG_QUIET);
    ResultStream result(ResultStream::Prints::ToStandardError);
    const Stereo speech = readStereo(choices.speech);
    const Stereo background = readStereo(choices.background);
    const Stereo output = readStereo(choices.output);
    if (speech.rate_hz != background.rate_hz || speech.rate_hz != output.rate_hz)
        throw Failure(ExitCode::UnsupportedAudio, "cannot measure \"" + choices.output +
                                                      "\": the three files have different sample rates");
    if (output.rate_hz < kLowestSpeechRate_hz)
        throw Failure(ExitCode::UnsupportedAudio,
                      "cannot measure \"" + choices.output + "\": its sample rate is below 500 Hz");
    const AlignedSpeech aligned =
        alignAndCompareSpeech(speech.samples, background.samples, output.samples, output.rate_hz);
    if (aligned.ratio.segments == 0)
        throw Failure(ExitCode::NoAudio,
                      "cannot measure \"" + choices.output + "\": there is no speech, or no background");
    throwUnlessExplained(aligned, choices.output);
    const std::vector<MeasuredInput> inputs = {{choices.speech, speech.damage},
                                               {choices.background, background.damage},
                                               {choices.output, output.damage}};
    result.write(choices.json ? jsonOf(aligned, isAnyDamaged(inputs)) : textOf(aligned, output.rate_hz));
    failIfDamaged(inputs);
}

}  // namespace

std::function<void()> addSpeechCommand(CLI::App& program) {
    auto choices = std::make_shared<SpeechChoices>();
    CLI::App* command =
        program.add_subcommand("speech", "Measure how far an effect raises speech above its background");
    command->footer(kSpeechFooter);
    command->add_option("SPEECH", choices->speech, "The speech alone")->option_text(" ")->required();
    command->add_option("BACKGROUND", choices->background, "The background alone")
        ->option_text(" ")
        ->required();
    command->add_option("OUT", choices->output, "The effect's output for SPEECH + BACKGROUND")
        ->option_text(" ")
        ->required();
    command->add_flag("--json", choices->json, "Print the results as one JSON object");
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
