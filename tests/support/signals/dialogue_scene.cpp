#include "support/signals/dialogue_scene.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <string>

#include "support/signals/recorded_speech.h"

namespace test {
namespace {

constexpr int kPeak = 9000;

Pcm oneAfterTheOther(const std::vector<std::string>& recordings) {
    Pcm all;
    for (const std::string& name : recordings) {
        const Pcm words = recordedSpeech(name);
        all.insert(all.end(), words.begin(), words.end());
    }
    return all;
}

// One-pole low-pass filter with its cut-off at 1 kHz for 48 kHz input.
Pcm dulled(const Pcm& bright) {
    Pcm dull;
    int level = 0;  // 1/8 of a sample step
    for (const std::int16_t sample : bright) {
        level += sample - level / 8;
        dull.push_back(static_cast<std::int16_t>(level / 8));
    }
    return dull;
}

Pcm backgroundOf(Sides sides, int frames) {
    if (sides == Sides::kNoise)
        return interleaved({dulled(noise(41, frames, 32767)), dulled(noise(42, frames, 32767))});
    return interleaved(
        {oneAfterTheOther({"Side_Left", "Rear_Left"}), oneAfterTheOther({"Rear_Right", "Side_Right"})});
}

double rms(const Pcm& pcm) {
    const double power = std::transform_reduce(pcm.begin(), pcm.end(), 0.0, std::plus<>(),
                                               [](double sample) { return sample * sample; });
    return std::sqrt(power / static_cast<double>(pcm.size()));
}

int peak(const std::vector<double>& samples) {
    double loudest = 0;
    for (const double sample : samples) loudest = std::max(loudest, std::abs(sample));
    return static_cast<int>(std::ceil(loudest));
}

}  // namespace

DialogueScene dialogueScene(Sides sides, double speech_db) {
    const Pcm words = oneAfterTheOther({"Front_Center", "Rear_Center", "Front_Left", "Front_Right"});
    DialogueScene scene{widened(words), backgroundOf(sides, static_cast<int>(words.size())), {}};
    while (scene.background.size() < scene.speech.size()) {
        const Pcm once = scene.background;
        scene.background.insert(scene.background.end(), once.begin(), once.end());
    }
    scene.background.resize(scene.speech.size());

    const double background_gain =
        rms(scene.speech) / rms(scene.background) * std::pow(10.0, -speech_db / 20);
    std::vector<double> mix;
    for (std::size_t i = 0; i < scene.speech.size(); ++i) {
        mix.push_back(scene.speech[i] + background_gain * scene.background[i]);
    }
    const double level = static_cast<double>(kPeak) / peak(mix);
    for (std::size_t i = 0; i < mix.size(); ++i) {
        scene.speech[i] = static_cast<std::int16_t>(level * scene.speech[i]);
        scene.background[i] = static_cast<std::int16_t>(level * background_gain * scene.background[i]);
        scene.mix.push_back(static_cast<std::int16_t>(scene.speech[i] + scene.background[i]));
    }
    return scene;
}

}  // namespace test
