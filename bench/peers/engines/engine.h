// Interface of every convolution engine in the comparison: some channels in, two ears out.
//
// An engine is made for one material. Its constructor converts that material to the engine's input format, so
// that the conversion is not timed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace compare {

/** Signal at the two ears: interleaved stereo, full scale 1. */
using Ears = std::vector<float>;

class Engine {
  public:
    explicit Engine(std::string name) : name_(std::move(name)) {}
    virtual ~Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /** Name in the report. */
    const std::string& name() const { return name_; }

    /** Frames per call; divides the length of every material. */
    virtual std::size_t callFrames() const = 0;

    /** Processes the next callFrames() frames of the material, starting at `first_frame`. Callers go through
     *  the material in order and then start again at its beginning. */
    virtual void process(std::size_t first_frame) = 0;

    /** Appends the output of the last call. */
    virtual void appendOutput(Ears& ears) = 0;

    /** Latency in a stream of this engine's own calls: frames of silence before the first sound. */
    virtual std::size_t delay_frames() const { return 0; }

    /** True if the engine limits peaks and outputs 16-bit PCM, as the library does. */
    virtual bool isLimitedPcm() const { return false; }

  private:
    std::string name_;
};

}  // namespace compare
