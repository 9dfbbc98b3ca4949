#include "scenes.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "material.h"

namespace study {

const std::vector<Layout>& layouts() {
    static const std::vector<Layout> all{{"stereo", 2, {{"right", 1, -30}, {"left", 0, 30}}},
                                         {"5.1",
                                          6,
                                          {{"surround right", 5, -110},
                                           {"right", 1, -30},
                                           {"centre", 2, 0},
                                           {"left", 0, 30},
                                           {"surround left", 4, 110}}},
                                         {"7.1",
                                          8,
                                          {{"back right", 5, -140},
                                           {"side right", 7, -90},
                                           {"right", 1, -30},
                                           {"centre", 2, 0},
                                           {"left", 0, 30},
                                           {"side left", 6, 90},
                                           {"back left", 4, 140}}}};
    return all;
}

Channels onChannel(const Sound& sound, std::size_t channels, std::size_t channel) {
    Channels all(channels, Sound(sound.size()));
    all[channel] = sound;
    return all;
}

std::vector<Material> stereoNoises() {
    const Sound noise = atLevel({pinkNoise(1, kSceneFrames)}, kSceneLevel_dbfs)[0];
    const Sound other = atLevel({pinkNoise(2, kSceneFrames)}, kSceneLevel_dbfs)[0];
    return {{"left only", {noise, Sound(kSceneFrames)}},
            {"wide: unrelated on both sides", {noise, other}},
            {"mono: the same on both sides", {noise, noise}}};
}

test::Pcm rendered(const Channels& sound, const SurroundType& type) {
    constexpr int kIdle = 30000;  // the limiter works from 32440 on
    test::Pcm out = surroundOf(toPcm(sound), static_cast<int>(sound.size()), type);
    for (const std::int16_t sample : out) {
        if (std::abs(int{sample}) > kIdle)
            throw std::runtime_error("a scene is so loud that the limiter may work");
    }
    return out;
}

void printTableHead(const std::string& first) {
    std::string names = "| " + first + " |";
    for (const SurroundType& type : kSurroundTypes) names += std::string(" ") + type.name + " |";
    std::string line = "|";
    for (const char letter : names.substr(1)) {
        if (letter == '|') line += "---|";
    }
    std::printf("\n%s\n%s\n", names.c_str(), line.c_str());
}

}  // namespace study
