// The layouts of surround, and the sounds that are played over them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "effect_runs.h"
#include "sound.h"

namespace study {

struct Loudspeaker {
    const char* name;
    std::size_t channel;
    double azimuth_deg;  // positive to the left
};

struct Layout {
    const char* name;
    std::size_t channels;
    std::vector<Loudspeaker> loudspeakers;  // without the low-frequency one, from the right round to the left
};

/** Stereo, 5.1 and 7.1. */
const std::vector<Layout>& layouts();

/** A sound of several channels with its name. */
struct Material {
    std::string name;
    Channels sound;
};

constexpr std::size_t kSceneFrames = std::size_t{12} * kRate_hz;
constexpr double kSceneLevel_dbfs = -30.0;  // leaves the limiter idle

/** A sound that is silent except for one channel. */
Channels onChannel(const Sound& sound, std::size_t channels, std::size_t channel);

/** Pink noise in stereo: on the left only, unrelated on both sides, and the same on both sides. */
std::vector<Material> stereoNoises();

/** The effect's output for a sound in the layout of its channel count; interleaved stereo.
 *  @throw std::runtime_error if the output is so loud that the limiter may have worked */
test::Pcm rendered(const Channels& sound, const SurroundType& type);

/** Prints the head of a Markdown table whose last columns are the types.
 *  @param first the columns before them */
void printTableHead(const std::string& first);

}  // namespace study
