#include "models/dialogue_parts.h"

#include <algorithm>
#include <iterator>

namespace model {
namespace {

void append(std::vector<float>& all, const std::vector<double>& part) {
    for (const double sample : part) all.push_back(static_cast<float>(sample));
}

}  // namespace

DialogueParts enhancedParts(const Samples& speech, const Samples& background, int rate_hz,
                            double voice_level) {
    const std::size_t points = dialoguePoints(rate_hz);
    StereoFrames mix_frames(points);
    StereoFrames speech_frames(points);
    StereoFrames background_frames(points);
    DialogueGains gains(1, 1, voice_level);
    DialogueParts parts;
    const std::size_t block_samples = points / 4 * 2;
    for (std::size_t done = 0; done + block_samples <= speech.size(); done += block_samples) {
        const auto block_of = [&](const Samples& samples) {
            const auto first = samples.begin() + static_cast<std::ptrdiff_t>(done);
            return Samples(first, first + static_cast<std::ptrdiff_t>(block_samples));
        };
        const Samples speech_block = block_of(speech);
        const Samples background_block = block_of(background);
        Samples mix_block;
        std::transform(speech_block.begin(), speech_block.end(), background_block.begin(),
                       std::back_inserter(mix_block),
                       [](int a, int b) { return static_cast<std::int16_t>(a + b); });
        const auto gain = gains.next(mix_frames.analyse(mix_block));
        append(parts.speech, speech_frames.synthesise(multiplied(speech_frames.analyse(speech_block), gain)));
        append(parts.background,
               background_frames.synthesise(multiplied(background_frames.analyse(background_block), gain)));
        parts.presence.push_back(gains.presence());
    }
    const auto delay_samples = static_cast<std::ptrdiff_t>(std::min(3 * block_samples, parts.speech.size()));
    parts.speech.erase(parts.speech.begin(), parts.speech.begin() + delay_samples);
    parts.background.erase(parts.background.begin(), parts.background.begin() + delay_samples);
    return parts;
}

}  // namespace model
