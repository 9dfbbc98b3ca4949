// Model of dialogue enhancement, written to be obviously right rather than fast. It shares no code with the
// engine.
//
// Everything is in double except the window, whose values are rounded to float, and the limiter, whose model
// has the engine's single precision. A queue stands in for each ring buffer.
#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "models/normalizer_model.h"

namespace model {

using Samples = std::vector<std::int16_t>;
using StereoSpectra = std::array<std::vector<std::complex<double>>, 2>;

/** Length of the transform. */
std::size_t dialoguePoints(int rate_hz);

/** Cuts a stereo stream into overlapping windowed frames and puts it together again. */
class StereoFrames {
  public:
    explicit StereoFrames(std::size_t points);

    /** @param block points / 4 new stereo frames, interleaved
     *  @return the spectra of the last `points` frames */
    StereoSpectra analyse(const Samples& block);

    /** @return the next points / 4 stereo frames, interleaved, full scale 1, with a latency of three hops */
    std::vector<double> synthesise(const StereoSpectra& spectra);

  private:
    std::size_t points_;
    std::vector<double> window_;
    std::array<std::vector<double>, 2> in_;   // the last `points_` samples
    std::array<std::vector<double>, 2> out_;  // sum of the overlapping frames
};

/** Computes a gain for each bin of each channel. */
class DialogueGains {
  public:
    DialogueGains(double gain_floor, double gain_scale, double voice_level)
        : gain_floor_(gain_floor), gain_scale_(gain_scale), voice_level_(voice_level) {}

    /** @return the gains for the next frame */
    std::array<std::vector<double>, 2> next(const StereoSpectra& frame);

    /** Centre presence of the last frame, 0 to 1. */
    double presence() const { return presence_; }

  private:
    void updatePresence(const std::vector<double>& centre, const std::vector<double>& side);

    double gain_floor_;
    double gain_scale_;
    double voice_level_;
    std::vector<double> centre_before_;  // magnitudes
    std::vector<double> side_before_;
    double presence_ = 0;
};

/** Multiplies each bin by its gain. */
StereoSpectra multiplied(const StereoSpectra& spectra, const std::array<std::vector<double>, 2>& gains);

/** The spectral processing and the limiter, one hop at a time. */
class DialogueBlocks {
  public:
    DialogueBlocks(int rate_hz, double gain_floor, double gain_scale, double voice_level)
        : frames_(dialoguePoints(rate_hz)), gains_(gain_floor, gain_scale, voice_level) {}

    Samples process(const Samples& block);

  private:
    StereoFrames frames_;
    DialogueGains gains_;
    Limiter limiter_;
};

/** The whole effect with its queues: each `process` stands for one call of aem_ProcessDialoguEnhance. */
class Dialogue {
  public:
    Dialogue(int rate_hz, double gain_floor, double gain_scale, double voice_level)
        : block_samples_(dialoguePoints(rate_hz) / 4 * 2),
          blocks_(rate_hz, gain_floor, gain_scale, voice_level) {}

    Samples process(const Samples& in);

  private:
    std::size_t block_samples_;
    DialogueBlocks blocks_;
    std::deque<std::int16_t> waiting_;
    std::deque<std::int16_t> done_;
};

}  // namespace model
