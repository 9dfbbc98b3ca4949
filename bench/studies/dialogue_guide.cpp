// Measures what dialogue enhancement does to several kinds of material, for each voice level.
//
//   rise      rise of speech over its background in the speech band, measured on the engine's output
//   loudness  change of the whole programme's loudness, in LU
//
// Usage: dialogue_guide [--plot FILE.png]     The table goes to standard output.
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "effect_runs.h"
#include "levels.h"
#include "material.h"
#include "speech_ratio.h"
#include "study_plot.h"

namespace {

using study::Channels;
using test::Pcm;

constexpr std::size_t kFrames = std::size_t{16} * study::kRate_hz;
constexpr int kMaxVoiceLevel = 10;
constexpr double kPeak_dbfs = -12.0;  // of a mix: keeps the limiter idle up to a gain of 8.5 dB
constexpr double kSpeechAbove_db = 6.0;

// Speech, its background and their sum: interleaved stereo.
struct Scene {
    std::string name;
    Pcm speech;
    Pcm background;
    Pcm mix;
};

// The mix is the sum of the rounded parts, so that the parts explain it exactly.
Scene sceneOf(const std::string& name, const Channels& speech, const Channels& background) {
    const double gain_db = kPeak_dbfs - study::peak_dbfs(study::sum({speech, background}));
    Scene scene{name,
                study::toPcm(study::scaled(speech, gain_db)),
                study::toPcm(study::scaled(background, gain_db)),
                {}};
    for (std::size_t i = 0; i < scene.speech.size(); ++i)
        scene.mix.push_back(static_cast<std::int16_t>(scene.speech[i] + scene.background[i]));
    return scene;
}

// Levels of speech, music and effects in a film: the speech leads by 8 dB over the music and by 4 dB over the
// effects, whose blasts exceed it for a moment.
Channels filmBackground(double speech_dbfs) {
    return study::sum({study::atLevel(study::music(kFrames), speech_dbfs - 8.0),
                       study::atLevel(study::filmEffects(kFrames), speech_dbfs - 4.0)});
}

std::vector<Scene> scenes() {
    const Channels centre = study::panned(study::speech(kFrames), 0.5);
    Channels aside = centre;
    aside[1] = study::scaled({aside[1]}, -6.0)[0];
    const double speech_dbfs = study::level_dbfs(centre);
    const double background_dbfs = speech_dbfs - kSpeechAbove_db;
    const Channels noise =
        study::atLevel({study::pinkNoise(1, kFrames), study::pinkNoise(2, kFrames)}, background_dbfs);
    const Channels talkers =
        study::atLevel({study::babble(3, kFrames), study::babble(4, kFrames)}, background_dbfs);
    const Channels music = study::atLevel(study::music(kFrames), background_dbfs);
    const Channels film = filmBackground(speech_dbfs);
    return {sceneOf("wide noise", centre, noise),
            sceneOf("babble at both sides", centre, talkers),
            sceneOf("panned music", centre, music),
            sceneOf("film: music and effects", centre, film),
            sceneOf("the film in mono", study::inMono(centre), study::inMono(film)),
            sceneOf("voice 6 dB louder on the left, wide noise", aside, noise)};
}

}  // namespace

int main(int argc, char** argv) try {
    const bool plots = argc == 3 && std::strcmp(argv[1], "--plot") == 0;
    if (argc != 1 && !plots) {
        (void)std::fputs("usage: dialogue_guide [--plot FILE.png]\n", stderr);
        return 2;
    }
    study::Figure figure;
    figure.title = "Speech over several backgrounds";
    figure.x = sonivex_plotting::linearAxis(0, kMaxVoiceLevel, 1, "voice level");
    figure.panels.resize(2);
    figure.panels[0].y = sonivex_plotting::linearAxis(0, 2.5, 0.5, "rise of speech over background (dB)");
    figure.panels[1].y = sonivex_plotting::linearAxis(0, 9, 1, "change of loudness (LU)");
    for (int voice_level = 0; voice_level <= kMaxVoiceLevel; ++voice_level)
        figure.x_values.push_back(voice_level);
    for (const Scene& scene : scenes()) {
        const double before_lufs = study::loudness_lufs(scene.mix, 2);
        figure.names.push_back(scene.name);
        for (study::Panel& panel : figure.panels) panel.curves.emplace_back();
        for (int voice_level = 0; voice_level <= kMaxVoiceLevel; ++voice_level) {
            const Pcm out = study::dialogueOf(scene.mix, voice_level);
            const auto ratio =
                sonivex_tool::compareSpeech(scene.speech, scene.background, out, study::kRate_hz);
            const double louder_lu = study::loudness_lufs(out, 2) - before_lufs;
            if (voice_level == 0) {
                std::printf("%s, speech %.1f dB above\n  voice   rise dB  loudness LU  unexplained %%\n",
                            scene.name.c_str(), ratio.before_db);
            }
            std::printf("  %5d  %8.2f  %11.2f  %13.2f\n", voice_level, ratio.rise_db(), louder_lu,
                        100.0 * ratio.unexplained);
            figure.panels[0].curves.back().push_back(ratio.rise_db());
            figure.panels[1].curves.back().push_back(louder_lu);
        }
    }
    if (plots && !study::writePng(figure, argv[2])) {
        (void)std::fprintf(stderr, "dialogue_guide: cannot write \"%s\"\n", argv[2]);
        return 1;
    }
    return 0;
} catch (const std::exception& error) {
    (void)std::fprintf(stderr, "dialogue_guide: %s\n", error.what());
    return 1;
}
