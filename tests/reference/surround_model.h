// Surround once more, written to be obviously right and not fast; shares no code with the engine but the data
// of the responses and the model of the limiter.
//
// Convolution is direct and in double: every input sample adds its scaled response to what is still to come.
// A queue stands for each ring.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "normalizer_model.h"

namespace model {

using Samples = std::vector<std::int16_t>;

/** What a stream becomes at the two ears, before it is limited or clipped. */
class Rendering {
  public:
    /** @param channels 2, 6 or 8. */
    Rendering(int type, int channels, int mode);

    /** The next frames. @param in interleaved, full scale 1. @return interleaved stereo. */
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
        std::vector<double> coming_[2];  // what earlier input still adds to each ear
    };

    std::size_t channels_;
    Stage loudspeakers_;
    Stage audio_;
    bool has_audio_stage_;
};

/** From ears to 16 bits, block by block of 240 frames. */
class OutputStage {
  public:
    explicit OutputStage(bool limits) : limits_(limits) {}
    Samples process(const std::vector<double>& block);

  private:
    bool limits_;
    Limiter limiter_;
};

/** -32768..-1 over 32768, 0..32767 over 32767. */
std::vector<double> toUnitScale(const Samples& samples);

/** The blocks and queues around a rendering: one call of aem_ProcessSurround after the other. */
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

/** What calls of these sizes get to see of an output that is made in blocks of 240 frames.
 *  @param blocks     the whole output, stereo.
 *  @param call_sizes frames of each call; their sum is at most that of the blocks. */
Samples servedInCalls(const Samples& blocks, const std::vector<int>& call_sizes);

}  // namespace model
