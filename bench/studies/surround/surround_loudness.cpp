#include <cstdio>
#include <string>
#include <vector>

#include "levels.h"
#include "material.h"
#include "scenes.h"
#include "surround_measures.h"

namespace study {
namespace {

using test::Pcm;

std::vector<Material> stereoMaterials() {
    const Sound voice = atLevel({speech(kSceneFrames)}, kSceneLevel_dbfs)[0];
    std::vector<Material> materials{{"speech, mono", {voice, voice}},
                                    {"speech, left only", {voice, Sound(kSceneFrames)}},
                                    {"music", atLevel(music(kSceneFrames), kSceneLevel_dbfs)}};
    for (Material& noise : stereoNoises()) {
        materials.push_back({"pink noise, " + noise.name, std::move(noise.sound)});
    }
    return materials;
}

// A film in 5.1 or 7.1: speech in the centre, music in front, effects in front and behind, rumble on the
// low-frequency channel.
Channels filmOf(const Layout& layout) {
    constexpr double kCorner_hz = 80.0;
    const Channels tune = atLevel(music(kSceneFrames), kSceneLevel_dbfs - 8.0);
    const Channels effects = atLevel(filmEffects(kSceneFrames), kSceneLevel_dbfs - 6.0);
    Channels film(layout.channels, Sound(kSceneFrames));
    film[2] = atLevel({speech(kSceneFrames)}, kSceneLevel_dbfs)[0];
    film[3] = atLevel({lowPassed(lowPassed(effects[0], kCorner_hz), kCorner_hz)}, kSceneLevel_dbfs - 6.0)[0];
    for (std::size_t side = 0; side < 2; ++side) {
        film[side] = sum({{tune[side]}, {effects[side]}})[0];
        for (std::size_t c = 4 + side; c < layout.channels; c += 2) film[c] = effects[side];
    }
    return film;
}

double loudnessChange_lu(const Channels& sound, const SurroundType& type) {
    const Pcm in = toPcm(sound);
    return loudness_lufs(rendered(sound, type), 2) - loudness_lufs(in, static_cast<int>(sound.size()));
}

void printLoudness(const std::string& name, const Channels& sound) {
    std::printf("| %s |", name.c_str());
    for (const SurroundType& type : kSurroundTypes) std::printf(" %+.1f |", loudnessChange_lu(sound, type));
    std::puts("");
}

}  // namespace

void measureLoudness() {
    printTableHead("layout | material");
    for (const Material& material : stereoMaterials())
        printLoudness("stereo | " + material.name, material.sound);
    for (const Layout& layout : layouts()) {
        if (layout.channels == 2) continue;
        Channels film = filmOf(layout);
        printLoudness(std::string(layout.name) + " | film", film);
        film[3].assign(kSceneFrames, 0.0);
        printLoudness(std::string(layout.name) + " | film without low-frequency channel", film);
    }
}

}  // namespace study
