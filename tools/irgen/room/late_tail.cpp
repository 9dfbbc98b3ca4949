#include "late_tail.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "exact_math.h"
#include "fft.h"
#include "noise.h"

namespace sonivex_irgen {
namespace {

constexpr double kLowestOctave_hz = 125.0;
constexpr double kLog1000 = 6.9078;  // ln 1000: 60 dB in nepers
constexpr double kEarDistance_m = 0.15;
// Every noise is uneven in some band by chance. With this offset, none of the loudspeakers is too uneven.
constexpr std::uint64_t kSeedOffset = 3'500'000;

constexpr std::array<double, kTailOctaves> kTimeFactors{1.15, 1.1, 1.0, 1.0, 1.0, 0.95, 0.85, 0.7};
constexpr std::array<double, kTailOctaves> kLevels_db{0.0, 0.0, 0.0, 0.0, -0.5, -1.5, -3.5, -6.0};

// Weight of an octave at a frequency. The windows add up to 1; the outer two extend to the ends of the
// spectrum.
double octaveWindow(std::size_t octave, double frequency_hz) {
    constexpr double kLast = kTailOctaves - 1;
    const double place = std::clamp(exactLog2(std::max(frequency_hz, 1.0) / kLowestOctave_hz), 0.0, kLast);
    const double distance = place - static_cast<double>(octave);
    if (distance <= -1.0 || distance >= 1.0) return 0.0;
    const double cosine = exactCos(0.5 * kPi * distance);
    return cosine * cosine;
}

double binFrequency_hz(std::size_t bin, std::size_t bins, double rate_hz) {
    return static_cast<double>(bin) * rate_hz / static_cast<double>(2 * (bins - 1));
}

// Splits noise into octaves, gives each its own decay and sums them.
std::vector<double> decayingNoise(const std::vector<Complex>& noise, const TailDecay& decay,
                                  std::size_t samples, double rate_hz) {
    std::vector<double> sum(samples, 0.0);
    for (std::size_t octave = 0; octave < kTailOctaves; ++octave) {
        const double level = dbToAmplitude(kLevels_db[octave]);
        std::vector<Complex> bins(noise.size());
        for (std::size_t k = 0; k < bins.size(); ++k) {
            bins[k] = level * octaveWindow(octave, binFrequency_hz(k, bins.size(), rate_hz)) * noise[k];
        }
        const std::vector<double> band = realSignal(bins);
        for (std::size_t n = 0; n < samples; ++n) {
            const double t_s = (static_cast<double>(n) - kOrigin_samples) / rate_hz;
            if (t_s <= 0.0) continue;
            const double envelope = std::min(t_s / decay.mixing_s, 1.0) *
                                    exactExp(-kLog1000 * t_s / decay.reverberation_times_s[octave]);
            sum[n] += envelope * band[n];
        }
    }
    return sum;
}

// Seed of the first of the two noises that belong to a source's seed.
std::uint64_t firstNoise(std::uint64_t seed) {
    return 2 * (seed + kSeedOffset) + 1;
}

std::vector<Complex> noiseSpectrum(std::uint64_t seed, std::size_t samples) {
    return realSpectrum(gaussianNoise(seed, samples), nextPowerOfTwo(samples));
}

}  // namespace

TailDecay roomDecay(const Room& room) {
    TailDecay decay{};
    for (std::size_t octave = 0; octave < kTailOctaves; ++octave) {
        decay.reverberation_times_s[octave] = room.reverberation_time_s * kTimeFactors[octave];
    }
    decay.mixing_s = 0.001 * std::sqrt(room.volume_m3());
    return decay;
}

double earCoherence(double frequency_hz) {
    const double kd = 2.0 * kPi * frequency_hz / kSpeedOfSound_m_s * kEarDistance_m;
    const double spread = 2.2 * kd;
    const double sinc = spread < 1e-6 ? 1.0 : exactSin(spread) / spread;
    const double shadow = 0.25 * kd * kd;
    return sinc / std::sqrt(1.0 + shadow * shadow);
}

EarSignals binauralTail(std::uint64_t seed, const TailDecay& decay, std::size_t samples) {
    const std::vector<Complex> x = noiseSpectrum(firstNoise(seed), samples);
    const std::vector<Complex> y = noiseSpectrum(firstNoise(seed) + 1, samples);
    std::vector<Complex> left(x.size());
    std::vector<Complex> right(x.size());
    for (std::size_t k = 0; k < x.size(); ++k) {
        const double coherence = earCoherence(binFrequency_hz(k, x.size(), kRate_hz));
        const Complex common = std::sqrt(0.5 * (1.0 + coherence)) * x[k];
        const Complex different = std::sqrt(0.5 * (1.0 - coherence)) * y[k];
        left[k] = common + different;
        right[k] = common - different;
    }
    return {decayingNoise(left, decay, samples, kRate_hz), decayingNoise(right, decay, samples, kRate_hz)};
}

std::vector<double> monoTail(std::uint64_t seed, const TailDecay& decay, std::size_t samples,
                             double rate_hz) {
    return decayingNoise(noiseSpectrum(firstNoise(seed), samples), decay, samples, rate_hz);
}

}  // namespace sonivex_irgen
