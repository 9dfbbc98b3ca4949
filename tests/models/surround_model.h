// Model of surround, written to be obviously right rather than fast. It shares only the response tables with
// the engine; its limiter is the model of normalizer_model.h.
//
// Convolution is direct and in double: every input sample adds its scaled response to the pending output.
// A queue stands in for each ring buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "normalizer_model.h"

namespace model {

using Samples = std::vector<std::int16_t>;

/** Renders a stream to the two ears, before limiter or clip. */
class Rendering {
  public:
    /** @param type     1 or 13
     *  @param channels 2, 6 or 8
     *  @param mode     room of type 13: 1, 2, and any other number for the third */
    Rendering(int type, int channels, int mode);

    /** Renders the next frames.
     *  @param in interleaved, full scale 1
     *  @return interleaved stereo, full scale 1 */
    std::vector<double> process(const std::vector<double>& in);

  private:
    struct Path {
        std::size_t from;  // channel
        std::size_t to;    // ear
        std::vector<double> response;
    };
    class Stage {
      public:
        void add(std::size_t from, std::size_t to, const std::int16_t* table, std::size_t taps,
                 double divisor);
        std::vector<double> process(const std::vector<double>& in, std::size_t width);

      private:
        std::vector<Path> paths_;
        std::vector<double> coming_[2];  // pending output of earlier input, per ear
    };

    std::size_t channels_;
    Stage loudspeakers_;
    Stage audio_;
    bool has_audio_stage_;
};

/** Limits or clips the ears' signal and truncates it to 16 bits, in blocks of 240 frames. */
class OutputStage {
  public:
    explicit OutputStage(bool limits) : limits_(limits) {}
    Samples process(const std::vector<double>& block);

  private:
    bool limits_;
    Limiter limiter_;
};

/** Divides negative samples by 32768 and the others by 32767. */
std::vector<double> toUnitScale(const Samples& samples);

/** The whole effect with its queues: each `process` stands for one call of aem_ProcessSurround. */
class Surround {
  public:
    Surround(int type, int channels, int mode, bool limits)
        : channels_(static_cast<std::size_t>(channels)), rendering_(type, channels, mode), output_(limits) {}

    Samples process(const Samples& in);

  private:
    std::size_t channels_;
    Rendering rendering_;
    OutputStage output_;
    std::deque<std::int16_t> waiting_;
    std::deque<std::int16_t> done_;
};

/** The output that calls of these sizes receive from an engine that renders blocks of 240 frames.
 *  @param blocks     the engine's whole output, interleaved stereo
 *  @param call_sizes frames of each call; their sum is at most the length of `blocks` */
Samples servedInCalls(const Samples& blocks, const std::vector<int>& call_sizes);

}  // namespace model
