// What every engine works on: one signal, and the library's own responses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace compare {

inline constexpr double kRate_hz = 48000;

/** Multiple of the calls of every engine: 240, 256 and 1024 frames. */
inline constexpr std::size_t kMaterialStep_frames = 15360;

/** What one ear hears of one channel. */
struct Path {
    std::size_t channel;
    std::size_t ear;  // 0 left, 1 right
    std::vector<float> response;
};

/** A set of responses that work side by side; a channel and an ear have at most one path. */
struct Stage {
    std::size_t channels;
    std::vector<Path> paths;

    std::size_t longestResponse() const;
};

/** A layout of one type: the loudspeakers, then for type 13 the voicing of the headphone. */
struct Layout {
    std::string name;  // "stereo", "5.1", "7.1"
    int type;          // 1 or 13
    std::vector<Stage> stages;

    std::size_t channels() const { return stages.front().channels; }
};

inline constexpr int kMode = 1;  // room of type 13

/** @param channels 2, 6 or 8.  @param type 1 or 13, with the room kMode. */
Layout makeLayout(std::size_t channels, int type);

/** Speech in noise, different in each channel. */
struct Material {
    std::size_t channels;
    std::vector<std::int16_t> pcm;  // [frames][channels]

    std::size_t frames() const { return pcm.size() / channels; }
    /** The channels one after the other as the library sees them: full scale 1. */
    std::vector<std::vector<float>> planes() const;
    /** The same, interleaved. */
    std::vector<float> interleaved() const;
};

/** @param sounding  channels that have sound; the others are zeros.
 *  @param loudness  1: the limiter has nothing to do, in any layout; 16: it works all the time. */
Material makeMaterial(std::size_t channels, std::size_t sounding, std::size_t frames, int loudness);

}  // namespace compare
