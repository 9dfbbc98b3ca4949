// What the comparison asks of everything that convolves some channels to two ears.
//
// An engine is made for one material and brings its input into the form that it takes by itself, before any
// clock runs.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace compare {

/** What two ears hear, full scale 1, interleaved. */
using Ears = std::vector<float>;

class Engine {
  public:
    explicit Engine(std::string name) : name_(std::move(name)) {}
    virtual ~Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    const std::string& name() const { return name_; }

    /** Frames that one call takes; a divisor of the length of every material. */
    virtual std::size_t callFrames() const = 0;

    /** Process callFrames() frames of the material from this one on. Calls go through the material in order
     *  and start again at its beginning. */
    virtual void process(std::size_t first_frame) = 0;

    /** Append what the last call put out. */
    virtual void appendOutput(Ears& ears) = 0;

    /** How late its output is in a stream of its own calls: frames of silence before the first sound. */
    virtual std::size_t delay_frames() const { return 0; }

    /** Whether it limits peaks and puts out 16-bit PCM, as the library does. */
    virtual bool isLimitedPcm() const { return false; }

  private:
    std::string name_;
};

}  // namespace compare
