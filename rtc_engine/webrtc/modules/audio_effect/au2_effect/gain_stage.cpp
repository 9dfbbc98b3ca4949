#include "gain_stage.h"

#include <algorithm>
#include <cmath>

#include "float_rules.h"
#include "pcm.h"

namespace {

constexpr float kInt16ToUnity = 0x1p-15F;
constexpr float kSmallestStepDb = 3.0F;

// Takes the logarithm in double and rounds it to float at once. C libraries differ in the last bit of a
// double, but no 16-bit peak has a level close enough to the midpoint of two floats for this to show.
float levelOfPeakDb(int peak) {
    const float amplitude = static_cast<float>(peak) * kInt16ToUnity;
    return static_cast<float>(20.0 * std::log10(static_cast<double>(amplitude)));
}

// Sets the mixer's gain for a block.
void followPeak(MixerState* mixer, const std::int16_t* input, int sample_count, float start_gain_db) {
    const float level_db = levelOfPeakDb(sonivex::largestMagnitude(input, sample_count));

    if (mixer->gainInitialised == 0) {
        mixer->gainInitialised = 1;
        mixer->gainDb = start_gain_db;
    }

    const float over_db = level_db + mixer->gainDb;
    if (over_db > 0.0F) mixer->gainDb = std::max(0.0F, mixer->gainDb - std::max(kSmallestStepDb, over_db));
}

}  // namespace

float ddagcproc_dB(MixerState* mixer, const std::int16_t* input, int sample_count, std::int16_t* output,
                   float start_gain_db) {
    followPeak(mixer, input, sample_count, start_gain_db);
    mixproc(mixer, &input, &mixer->gainDb, 1, 1, sample_count, output);
    return mixer->gainDb;
}

float applyGainStage(MixerState* mixer, const std::int16_t* input, int sample_count,
                     const MixerBuffers& buffers, std::int16_t* output, float start_gain_db) {
    followPeak(mixer, input, sample_count, start_gain_db);
    mixWith(mixer, &input, &mixer->gainDb, 1, 1, sample_count, buffers, output);
    return mixer->gainDb;
}
