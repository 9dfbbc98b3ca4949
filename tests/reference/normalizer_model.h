// The whole normalizer once more, written to be obviously right and not fast; shares no code with the engine.
//
// A queue stands for each ring, the window of a limiter is searched from end to end for its maximum, and
// numbers are written in decimal and rounded to float where the engine has bit patterns. What must be the
// same to give the same bits is the order of the float operations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace model {

/** What a limiter compares with its ceiling. */
enum class Detection {
    kLoudestOfTheCall,  // every sample counts as loud as the loudest of its call; no delay
    kEachSample,        // each sample by itself; the output is delayed by 63 samples
};

class Limiter {
  public:
    explicit Limiter(Detection detection = Detection::kLoudestOfTheCall) : detection_(detection) {}
    std::vector<float> process(const std::vector<float>& block);

  private:
    float targetGain(float level);
    float nextOutput(float target, float x);

    Detection detection_;
    float ceiling_ = static_cast<float>(0.99 * 32768);
    float gain_ = 1;
    float smoothed_ = 1;
    bool is_limiting_ = false;
    std::deque<float> window_;  // levels of up to 64 samples since the limiter engaged
    std::deque<float> past_ = std::deque<float>(63, 0.0F);
};

class Normalizer {
  public:
    explicit Normalizer(std::size_t channels) : channels_(channels) {}

    /** One call of aem_ProcessNormalizer. */
    std::vector<std::int16_t> process(const std::vector<std::int16_t>& in);

    float gainDb() const { return gain_db_; }

  private:
    std::vector<std::int16_t> processBlock(const std::vector<std::int16_t>& block);

    std::size_t channels_;
    float gain_db_ = 20;
    Limiter mixer_limiter_;
    Limiter output_limiter_;
    std::deque<std::int16_t> waiting_;
    std::deque<std::int16_t> done_;
};

}  // namespace model
