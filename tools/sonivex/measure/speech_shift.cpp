#include "speech_shift.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "delay_finder.h"

namespace sonivex_tool {
namespace {

constexpr std::size_t kChannels = 2;
constexpr std::size_t kSearched_s = 10;
// Length of the steps in which the loudest stretch is sought: 1 / kStepsPerSecond.
constexpr std::size_t kStepsPerSecond = 10;
constexpr int kLongestShiftPerSecond = 2;

// Maximum power that neither sound explains, over that of the weaker sound. With a wrong background under
// loud speech, the residue is as small a share of the output as the background, so its share alone tells too
// little. The fit mistakes up to 1/20 of an unrelated residue for the weaker sound, so at 4 times the weaker
// sound the ratio is wrong by up to 20 %, 0.8 dB.
constexpr double kMaxResidueOfWeaker = 4.0;
// Maximum share of the output's power that neither sound explains. An effect that mixes the channels with
// each other, or adds reverberation, leaves more, and the ratio is then wrong by up to 3 dB.
//
// The ranges below cover five scenes of 11 and 15 s: recorded speech, 24 dB above to 12 dB below noise, tones
// or voices.
//
//                                              residue in %   over the weaker sound
//   dialogue enhancement, voice level 1 to 4      0 to  0.2       0   to  0.4
//   the same, then AC-3                         0.1 to  0.5       0   to  0.5
//   normalizer                                    0 to  0.3       0   to  0.03
//   AC-3, MP3, AAC, Opus from 96 kbit/s on        0 to  3.9       0   to  1.4
//   MP3 at 64 kbit/s                            0.3 to  3.1       0   to  1.1
//   a limiter at +30 dB                         1.3 to  3.4       0.1 to  1.7
//   Opus at 32 kbit/s                           1.8 to 27         0.1 to  7.6
//   surround, MegaBass in mode 1                3.8 to  7.5       0.2 to 10
//   surround, 3DSurround                        6.4 to 41         0.9 to 15
//   a clock that is 0.002 % too fast            5.8 to 14         0.2 to 17
//   0.01 % too fast                            41   to 52         2.2 to 27
//   0.1 % too fast                             57   to 86         4.1 to 26
//   a shift beyond the search                  52   to 96        31   to 52
//   another background, another speech          0.4 to 93        24   to 84
constexpr double kMaxResidue = 0.05;

using Interleaved = std::span<const float>;

// Returns the power of the mix in each step, summed over the frames of the step.
std::vector<double> powersOfSteps(Interleaved speech, Interleaved background, std::size_t frames,
                                  std::size_t step_frames) {
    std::vector<double> powers(frames / step_frames + 1, 0.0);
    for (std::size_t n = 0; n < frames * kChannels; ++n) {
        const double mixed = static_cast<double>(speech[n]) + static_cast<double>(background[n]);
        powers[n / kChannels / step_frames] += mixed * mixed;
    }
    return powers;
}

// Returns the first of `count` neighbouring steps whose powers have the greatest sum.
std::size_t loudestSteps(const std::vector<double>& powers, std::size_t count) {
    std::size_t loudest = 0;
    double greatest = 0.0;
    for (std::size_t first = 0; first + count <= powers.size(); ++first) {
        double sum = 0.0;
        for (std::size_t step = first; step < first + count; ++step) sum += powers[step];
        if (sum > greatest) {
            greatest = sum;
            loudest = first;
        }
    }
    return loudest;
}

// Returns the lag of the output at which it matches the mix, if one stands out.
std::optional<int64_t> delayOf(Interleaved speech, Interleaved background, Interleaved output, int rate_hz) {
    const std::size_t frames = std::min({speech.size(), background.size(), output.size()}) / kChannels;
    const auto rate = static_cast<std::size_t>(rate_hz);
    const std::size_t length = std::min(frames, kSearched_s * rate);
    if (length < 2) return std::nullopt;
    const std::size_t step_frames = rate / kStepsPerSecond;
    const std::size_t steps = kSearched_s * kStepsPerSecond;
    const std::vector<double> powers = powersOfSteps(speech, background, frames, step_frames);
    const std::size_t first = std::min(loudestSteps(powers, steps) * step_frames, frames - length);

    std::array<std::vector<float>, kChannels> mix;
    std::array<std::vector<float>, kChannels> out;
    std::vector<ChannelPair> pairs;
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        for (std::size_t frame = first; frame < first + length; ++frame) {
            const std::size_t at = frame * kChannels + channel;
            mix[channel].push_back(speech[at] + background[at]);
            out[channel].push_back(output[at]);
        }
        pairs.push_back({mix[channel], out[channel]});
    }
    const int longest = std::min(rate_hz / kLongestShiftPerSecond, static_cast<int>(length) - 1);
    return findDelay(pairs, longest);
}

// Compares the sounds without the frames that only one of them has if the output lags by `shift_frames`.
SpeechRatio compareShifted(Interleaved speech, Interleaved background, Interleaved output, int rate_hz,
                           int64_t shift_frames) {
    const auto skipped = [](Interleaved sound, int64_t frames) {
        const auto samples = static_cast<std::size_t>(std::max<int64_t>(frames, 0)) * kChannels;
        return sound.subspan(std::min(samples, sound.size()));
    };
    return compareSpeech(skipped(speech, -shift_frames), skipped(background, -shift_frames),
                         skipped(output, shift_frames), rate_hz);
}

}  // namespace

double AlignedSpeech::weakerShare() const {
    return std::min(ratio.speech_share, ratio.background_share);
}

bool AlignedSpeech::isExplained() const {
    return ratio.unexplained <= std::min(kMaxResidue, kMaxResidueOfWeaker * weakerShare());
}

AlignedSpeech alignAndCompareSpeech(Interleaved speech, Interleaved background, Interleaved output,
                                    int rate_hz) {
    const AlignedSpeech unshifted = {0, compareSpeech(speech, background, output, rate_hz)};
    const int64_t shift = delayOf(speech, background, output, rate_hz).value_or(0);
    if (shift == 0) return unshifted;
    const AlignedSpeech shifted = {shift, compareShifted(speech, background, output, rate_hz, shift)};
    const bool is_better =
        shifted.ratio.segments > 0 &&
        (unshifted.ratio.segments == 0 || shifted.ratio.unexplained < unshifted.ratio.unexplained);
    return is_better ? shifted : unshifted;
}

}  // namespace sonivex_tool
