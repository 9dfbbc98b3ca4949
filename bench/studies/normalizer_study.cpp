// Measures what the normalizer does to levels:
//
//   levels   RMS of each half second of quiet speech, a loud passage, and the same quiet speech again
//   peaks    sample peak and true peak (ITU-R BS.1770-4, annex 2) before and after, by material
//
// Usage: normalizer_study [--plot FILE.png]     The tables go to standard output, where the effect also
//                                               prints its version.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <numbers>
#include <string>
#include <vector>

#include "effect_runs.h"
#include "levels.h"
#include "material.h"
#include "study_plot.h"

namespace {

using study::Channels;
using study::kRate_hz;
using study::Sound;
using test::Pcm;

constexpr std::size_t kSecond_frames = kRate_hz;
constexpr std::size_t kWindow_frames = kRate_hz / 2;

// The passages of the scene, and their peaks.
constexpr std::size_t kQuiet_s = 6;
constexpr std::size_t kLoud_s = 3;
constexpr double kQuietPeak_dbfs = -30.0;
constexpr double kLoudPeak_dbfs = -6.0;

Channels speechAt(std::size_t length_s, double peak_dbfs) {
    const Channels speech{study::speech(length_s * kSecond_frames)};
    return study::scaled(speech, peak_dbfs - study::peak_dbfs(speech));
}

// Mono: quiet speech, a loud passage of it, and the quiet speech again.
Pcm loudPassage() {
    Pcm all;
    for (const Channels& part : {speechAt(kQuiet_s, kQuietPeak_dbfs), speechAt(kLoud_s, kLoudPeak_dbfs),
                                 speechAt(kQuiet_s, kQuietPeak_dbfs)})
        test::append(all, study::toPcm(part));
    return all;
}

// As a player does that flushes when the loud passage is over: a new effect for the rest.
Pcm normalizedWithFlush(const Pcm& in) {
    const auto rest = in.begin() + static_cast<std::ptrdiff_t>((kQuiet_s + kLoud_s) * kSecond_frames);
    Pcm out = study::normalizedOf(Pcm(in.begin(), rest), 1);
    out.resize(static_cast<std::size_t>(rest - in.begin()));
    test::append(out, study::normalizedOf(Pcm(rest, in.end()), 1));
    return out;
}

study::Figure levelFigure() {
    const Pcm in = loudPassage();
    const std::size_t windows = in.size() / kWindow_frames;
    study::Figure figure;
    figure.title = "A loud passage and the quiet speech after it";
    figure.names = {"input", "output if the player flushes after the loud passage", "output"};
    figure.x =
        sonivex_plotting::linearAxis(0, static_cast<double>(in.size() / kSecond_frames), 1, "time (s)");
    for (std::size_t w = 0; w < windows; ++w) figure.x_values.push_back(0.5 * static_cast<double>(w) + 0.25);
    study::Panel panel;
    panel.y = sonivex_plotting::linearAxis(-70, 0, 10, "RMS level of half a second (dBFS)");
    for (const Pcm& signal : {in, normalizedWithFlush(in), study::normalizedOf(in, 1)})
        panel.curves.push_back(study::windowLevels_dbfs(study::channelOf(signal, 1, 0), kWindow_frames));
    figure.panels.push_back(panel);
    return figure;
}

// Returns the mean gain in dB of a curve over another between two times.
double gain_db(const study::Figure& figure, std::size_t curve, double from_s, double to_s) {
    double sum = 0.0;
    int windows = 0;
    for (std::size_t w = 0; w < figure.x_values.size(); ++w) {
        if (figure.x_values[w] < from_s || figure.x_values[w] >= to_s) continue;
        sum += figure.panels[0].curves[curve][w] - figure.panels[0].curves[0][w];
        ++windows;
    }
    return sum / windows;
}

void printLevels(const study::Figure& figure) {
    constexpr double kAfter_s = kQuiet_s + kLoud_s;
    std::printf("speech peaking at %.0f dBFS, then at %.0f, then at %.0f again: mean gain in dB\n",
                kQuietPeak_dbfs, kLoudPeak_dbfs, kQuietPeak_dbfs);
    std::puts("                              quiet    loud   quiet again");
    for (const std::size_t curve : {std::size_t{2}, std::size_t{1}}) {
        std::printf("  %-26s %6.1f  %6.1f  %12.1f\n", curve == 2 ? "as it is" : "with a flush in between",
                    gain_db(figure, curve, 0.0, kQuiet_s), gain_db(figure, curve, kQuiet_s, kAfter_s),
                    gain_db(figure, curve, kAfter_s, kAfter_s + kQuiet_s));
    }
}

struct Material {
    const char* name;
    Channels sound;
};

// A tone whose samples miss its peaks by as much as they can: a quarter of the rate, and 45 degrees of phase.
Channels quarterRateTone(std::size_t frames) {
    Sound tone(frames);
    for (std::size_t n = 0; n < frames; ++n)
        tone[n] = std::sin(std::numbers::pi / 2.0 * (static_cast<double>(n) + 0.5));
    return {tone};
}

std::vector<Material> materials() {
    constexpr std::size_t kFrames = 12 * kSecond_frames;
    const Channels speech{study::speech(kFrames)};
    const Channels music = study::music(kFrames);
    // As a loud master: its peaks are cut, which makes 16-bit samples of full scale in a row.
    const test::Pcm cut = study::toPcm(study::scaled(music, 6.0 - study::peak_dbfs(music)));
    return {{"speech (recorded)", speech},
            {"babble (recorded)", {study::babble(1, kFrames), study::babble(2, kFrames)}},
            {"music", music},
            {"music, peaks cut by 6 dB", {study::channelOf(cut, 2, 0), study::channelOf(cut, 2, 1)}},
            {"drums", study::drums(kFrames)},
            {"speech over music", study::sum({study::panned(speech[0], 0.5),
                                              study::atLevel(music, study::level_dbfs(speech) - 8.0)})},
            {"film effects", study::filmEffects(kFrames)},
            {"pink noise", {study::pinkNoise(1, kFrames), study::pinkNoise(2, kFrames)}},
            {"white noise", {study::whiteNoise(1, kFrames), study::whiteNoise(2, kFrames)}},
            {"tone at 12 kHz, 45 degrees", quarterRateTone(kFrames)}};
}

void printPeaks() {
    std::puts("\npeaks: the input's sample peak and true peak, and the output's, in dBFS and dBTP");
    for (const Material& material : materials()) {
        for (const double peak_dbfs : {-20.0, -10.0, -1.0}) {
            const Channels sound =
                study::scaled(material.sound, peak_dbfs - study::peak_dbfs(material.sound));
            const int channels = static_cast<int>(sound.size());
            const Pcm in = study::toPcm(sound);
            const auto before = study::levelsOf(in, channels).all;
            const auto after = study::levelsOf(study::normalizedOf(in, channels), channels).all;
            std::printf("  %-28s %6.1f %6.2f -> %6.2f %6.2f\n", material.name,
                        before.sample_peak_dbfs.value(), before.true_peak_dbtp.value(),
                        after.sample_peak_dbfs.value(), after.true_peak_dbtp.value());
        }
    }
}

}  // namespace

int main(int argc, char** argv) try {
    const bool plots = argc == 3 && std::strcmp(argv[1], "--plot") == 0;
    if (argc != 1 && !plots) {
        (void)std::fputs("usage: normalizer_study [--plot FILE.png]\n", stderr);
        return 2;
    }
    const study::Figure figure = levelFigure();
    printLevels(figure);
    printPeaks();
    if (plots && !study::writePng(figure, argv[2])) {
        (void)std::fprintf(stderr, "normalizer_study: cannot write \"%s\"\n", argv[2]);
        return 1;
    }
    return 0;
} catch (const std::exception& error) {
    (void)std::fprintf(stderr, "normalizer_study: %s\n", error.what());
    return 1;
}
