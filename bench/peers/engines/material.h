// Input of every engine: one test signal and the library's own impulse responses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace compare {

inline constexpr double kRate_hz = 48000;

/** A common multiple of every engine's call length: 240, 256 and 1024 frames. */
inline constexpr std::size_t kMaterialStep_frames = 15360;

/** Impulse response from one channel to one ear. */
struct Path {
    std::size_t channel;
    std::size_t ear;  // 0 left, 1 right
    std::vector<float> response;
};

/** A set of responses that work in parallel; each pair of channel and ear has at most one path. */
struct Stage {
    std::size_t channels;
    std::vector<Path> paths;

    /** In taps. */
    std::size_t longestResponse() const;
};

/** A channel layout of one surround type: the loudspeakers, then for type 13 the headphone voicing. */
struct Layout {
    std::string name;  // "stereo", "5.1", "7.1"
    int type;          // 1 or 13
    std::vector<Stage> stages;

    std::size_t channels() const { return stages.front().channels; }
};

inline constexpr int kMode = 1;  // the room of type 13

/** @param channels 2, 6 or 8
 *  @param type     1 or 13; type 13 uses room kMode
 *  Throws std::invalid_argument for another channel count. */
Layout makeLayout(std::size_t channels, int type);

/** Speech in noise, different in each channel. */
struct Material {
    std::size_t channels;
    std::vector<std::int16_t> pcm;  // [frames][channels]

    std::size_t frames() const { return pcm.size() / channels; }
    /** One vector per channel, full scale 1, scaled as the library scales its input. */
    std::vector<std::vector<float>> planes() const;
    /** The same samples, interleaved. */
    std::vector<float> interleaved() const;
};

/** @param sounding the first `sounding` channels have sound, the others are zero
 *  @param loudness factor: at 1 the limiter is idle in every layout, at 16 it works all the time */
Material makeMaterial(std::size_t channels, std::size_t sounding, std::size_t frames, int loudness);

}  // namespace compare
