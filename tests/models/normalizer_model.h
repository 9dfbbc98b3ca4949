// Model of the whole normalizer, written to be obviously right rather than fast. It shares no code with the
// engine.
//
// A queue stands in for each ring buffer, a linear search finds the maximum in a limiter's window, and
// decimal constants rounded to float replace the engine's bit patterns. The float operations keep the
// engine's order, because the bits of the result depend on it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace model {

/** The level that a limiter compares with its ceiling. */
enum class Detection {
    kLoudestOfTheCall,  // the peak of the call, for every sample; no latency
    kEachSample,        // the magnitude of each sample; the output is delayed by 63 samples
};

/** Limits peaks to 0.99 of full scale, with one gain for all samples of an interleaved stream. */
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

    /** Stands for one call of aem_ProcessNormalizer. */
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
