// Measures by how much dialogue enhancement raises speech in the centre over a background at the sides, for
// each voice level.
//
//   rise      rise of speech over background in the speech band, measured on the engine's output
//   parts     the same, measured on speech and background apart, each multiplied by the model's gains
//   presence  the model's presence, mean over the blocks with speech
//
// Usage: dialogue_study [--plot FILE.png]     The table goes to standard output.
#include <cstdio>
#include <cstring>
#include <exception>

#include "effect_runs.h"
#include "models/dialogue_parts.h"
#include "speech_ratio.h"
#include "study_plot.h"
#include "support/signals/dialogue_scene.h"

namespace {

using sonivex_plotting::linearAxis;
using sonivex_tool::compareSpeech;
using sonivex_tool::ratioOfParts_db;
using test::DialogueScene;
using test::Pcm;
using test::Sides;

using study::kRate_hz;
constexpr int kHopFrames = 512;
constexpr int kMaxVoiceLevel = 10;
// A block counts as speech down to 20 dB below the mean power, as in compareSpeech.
constexpr double kActiveShare = 0.01;

struct Case {
    const char* name;
    Sides sides;
    double speech_db;
};
constexpr Case kCases[] = {{"noise, speech 12 dB above", Sides::kNoise, 12},
                           {"noise, as loud as speech", Sides::kNoise, 0},
                           {"voices, speech 12 dB above", Sides::kVoices, 12},
                           {"voices, as loud as speech", Sides::kVoices, 0}};

struct Result {
    double rise_db;
    double parts_db;
    double presence;
};

// Energy of the speech in each block.
std::vector<double> blockPowers(const Pcm& speech) {
    std::vector<double> powers(speech.size() / (std::size_t{2} * kHopFrames));
    for (std::size_t i = 0; i < powers.size() * 2 * kHopFrames; ++i) {
        powers[i / (std::size_t{2} * kHopFrames)] += static_cast<double>(speech[i]) * speech[i];
    }
    return powers;
}

double meanWhileSpoken(const std::vector<double>& presence, const Pcm& speech) {
    const std::vector<double> powers = blockPowers(speech);
    double mean_power = 0;
    for (const double power : powers) mean_power += power / static_cast<double>(powers.size());
    double sum = 0;
    double blocks = 0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        if (powers[i] < kActiveShare * mean_power) continue;
        sum += presence[i];
        ++blocks;
    }
    return sum / blocks;
}

Result measured(const DialogueScene& scene, double voice_level) {
    const Pcm out = study::dialogueOf(scene.mix, voice_level);
    const model::DialogueParts parts =
        model::enhancedParts(scene.speech, scene.background, kRate_hz, voice_level);
    const std::vector<float> speaker(scene.speech.begin(), scene.speech.end());
    const std::vector<float> background(scene.background.begin(), scene.background.end());
    return {compareSpeech(scene.speech, scene.background, out, kRate_hz).rise_db(),
            ratioOfParts_db(parts.speech, parts.background, speaker, kRate_hz) -
                ratioOfParts_db(speaker, background, speaker, kRate_hz),
            meanWhileSpoken(parts.presence, scene.speech)};
}

using Curves = std::vector<std::vector<double>>;

study::Figure figureOf(const Curves& rises, const Curves& presences) {
    study::Figure figure;
    figure.title = "Speech in the centre over a background at the sides";
    figure.x = linearAxis(0, kMaxVoiceLevel, 1, "voice level");
    for (int voice_level = 0; voice_level <= kMaxVoiceLevel; ++voice_level) {
        figure.x_values.push_back(voice_level);
    }
    for (const Case& each : kCases) figure.names.emplace_back(each.name);
    figure.panels.resize(2);
    figure.panels[0].y = linearAxis(0, 3, 0.5, "rise of speech over background (dB)");
    figure.panels[0].curves = rises;
    figure.panels[1].y = linearAxis(0, 1, 0.2, "mean presence during speech");
    figure.panels[1].curves = presences;
    return figure;
}

}  // namespace

int main(int argc, char** argv) try {
    const bool plots = argc == 3 && std::strcmp(argv[1], "--plot") == 0;
    if (argc != 1 && !plots) {
        (void)std::fputs("usage: dialogue_study [--plot FILE.png]\n", stderr);
        return 2;
    }
    Curves rises;
    Curves presences;
    for (const Case& each : kCases) {
        const DialogueScene scene = test::dialogueScene(each.sides, each.speech_db);
        std::printf("%s\n  voice   rise dB  parts dB  presence\n", each.name);
        rises.emplace_back();
        presences.emplace_back();
        for (int voice_level = 0; voice_level <= kMaxVoiceLevel; ++voice_level) {
            const Result result = measured(scene, voice_level);
            std::printf("  %5d  %8.2f  %8.2f  %8.2f\n", voice_level, result.rise_db, result.parts_db,
                        result.presence);
            rises.back().push_back(result.rise_db);
            presences.back().push_back(result.presence);
        }
    }
    if (plots && !study::writePng(figureOf(rises, presences), argv[2])) {
        (void)std::fprintf(stderr, "dialogue_study: cannot write \"%s\"\n", argv[2]);
        return 1;
    }
    return 0;
} catch (const std::exception& error) {
    (void)std::fprintf(stderr, "dialogue_study: %s\n", error.what());
    return 1;
}
