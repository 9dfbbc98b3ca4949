// Gaussian noise that is the same on every machine. Each value is the sum of the eight 16-bit fields of two
// successive outputs of SplitMix64 (Steele, Lea & Flood 2014).
//
// Use: GaussianNoise noise(seed); then next() for every sample.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonivex_irgen {

/** SplitMix64, the generator of Steele, Lea & Flood; any seed is good. */
class SplitMix64 {
  public:
    explicit SplitMix64(std::uint64_t seed) : state_(seed) {}

    /** Next 64 random bits. */
    std::uint64_t next();

  private:
    std::uint64_t state_;
};

/** Values of mean 0 and variance 1, within +-4.9. */
class GaussianNoise {
  public:
    explicit GaussianNoise(std::uint64_t seed) : bits_(seed) {}

    /** Next value. */
    double next();

  private:
    SplitMix64 bits_;
};

/** First `count` values of a seed. */
std::vector<double> gaussianNoise(std::uint64_t seed, std::size_t count);

}  // namespace sonivex_irgen
