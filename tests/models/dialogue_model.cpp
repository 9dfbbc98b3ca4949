#include "models/dialogue_model.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "models/fourier.h"

namespace model {
namespace {

constexpr double kEpsilon = 0x1p-23;  // machine epsilon of float
constexpr std::size_t kRingHolds = 81919;

double square(double x) {
    return x * x;
}

// Appends as many samples as the ring has room for and drops the rest.
void queue(std::deque<std::int16_t>& ring, const Samples& samples) {
    for (const std::int16_t sample : samples) {
        if (ring.size() < kRingHolds) ring.push_back(sample);
    }
}

// Takes `count` samples, or returns silence if there are fewer.
Samples take(std::deque<std::int16_t>& ring, std::size_t count) {
    if (ring.size() < count) return Samples(count, 0);
    const auto end = ring.begin() + static_cast<std::ptrdiff_t>(count);
    Samples samples(ring.begin(), end);
    ring.erase(ring.begin(), end);
    return samples;
}

std::int16_t toPcm(float x) {
    return static_cast<std::int16_t>(std::clamp(std::trunc(x), -32768.0F, 32767.0F));
}

// Spectral flux: sum over all bins of the squared change in magnitude.
double flux(const std::vector<double>& now, const std::vector<double>& before) {
    double sum = 0;
    for (std::size_t k = 0; k < now.size(); ++k) sum += square(now[k] - before[k]);
    return sum;
}

}  // namespace

std::size_t dialoguePoints(int rate_hz) {
    return rate_hz <= 50000 ? 2048 : rate_hz <= 100000 ? 4096 : 8192;
}

StereoFrames::StereoFrames(std::size_t points) : points_(points) {
    for (std::size_t i = 0; i < points; ++i) {
        const double w =
            std::sin(std::numbers::pi * static_cast<double>(i) / static_cast<double>(points - 1));
        window_.push_back(static_cast<double>(static_cast<float>(w)));
    }
    for (const std::size_t c : {0U, 1U}) {
        in_.at(c).assign(points, 0);
        out_.at(c).assign(points, 0);
    }
}

StereoSpectra StereoFrames::analyse(const Samples& block) {
    StereoSpectra spectra;
    for (const std::size_t c : {0U, 1U}) {
        std::vector<double>& in = in_.at(c);
        in.erase(in.begin(), in.begin() + static_cast<std::ptrdiff_t>(block.size() / 2));
        for (std::size_t i = c; i < block.size(); i += 2) {
            in.push_back(block[i] / (block[i] < 0 ? 32768.0 : 32767.0));
        }
        std::vector<double> frame;
        for (std::size_t i = 0; i < points_; ++i) frame.push_back(in[i] * window_[i]);
        spectra.at(c) = spectrumOf(frame);
    }
    return spectra;
}

std::vector<double> StereoFrames::synthesise(const StereoSpectra& spectra) {
    const std::size_t hop = points_ / 4;
    std::vector<double> block(2 * hop);
    for (const std::size_t c : {0U, 1U}) {
        std::vector<double>& out = out_.at(c);
        const std::vector<double> frame = signalOf(spectra.at(c));
        for (std::size_t i = 0; i < points_; ++i) out[i] += frame[i] * window_[i];
        for (std::size_t i = 0; i < hop; ++i) block[2 * i + c] = out[i] / 1.5;
        out.erase(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(hop));
        out.resize(points_, 0);
    }
    return block;
}

std::array<std::vector<double>, 2> DialogueGains::next(const StereoSpectra& frame) {
    const auto& [left, right] = frame;
    std::vector<double> centre;
    std::vector<double> side;
    for (std::size_t k = 0; k < left.size(); ++k) {
        const std::complex<double> sum = left[k] + right[k];
        const std::complex<double> difference = left[k] - right[k];
        const double factor = (1 - std::sqrt(std::norm(difference) / (std::norm(sum) + kEpsilon))) / 2;
        centre.push_back(std::abs(factor * sum));
        side.push_back(std::abs(difference));
    }
    updatePresence(centre, side);

    // A bin's gain grows with the power of its own channel relative to that of the channel difference.
    std::array<std::vector<double>, 2> gains;
    for (const std::size_t c : {0U, 1U}) {
        for (std::size_t k = 0; k < side.size(); ++k) {
            const double own = std::norm(frame.at(c)[k]);
            const double share = own / (square(side[k]) + own + kEpsilon);
            gains.at(c).push_back(share * presence_ * gain_scale_ + gain_floor_);
        }
    }
    return gains;
}

void DialogueGains::updatePresence(const std::vector<double>& centre, const std::vector<double>& side) {
    // The first frame is compared with silence.
    centre_before_.resize(centre.size(), 0);
    side_before_.resize(side.size(), 0);
    const double centre_flux = flux(centre, centre_before_);
    const double side_flux = flux(side, side_before_);
    const double share = centre_flux / (centre_flux + side_flux + kEpsilon);
    presence_ = 0.9 * presence_ + 0.1 * std::clamp((share - 0.5) * voice_level_, 0.0, 1.0);
    centre_before_ = centre;
    side_before_ = side;
    // The engine keeps no history of the highest bin, so it is always compared with silence.
    centre_before_.back() = 0;
    side_before_.back() = 0;
}

StereoSpectra multiplied(const StereoSpectra& spectra, const std::array<std::vector<double>, 2>& gains) {
    StereoSpectra result;
    for (const std::size_t c : {0U, 1U}) {
        for (std::size_t k = 0; k < spectra.at(c).size(); ++k) {
            result.at(c).push_back(gains.at(c)[k] * spectra.at(c)[k]);
        }
    }
    return result;
}

Samples DialogueBlocks::process(const Samples& block) {
    const StereoSpectra frame = frames_.analyse(block);
    std::vector<float> numbers;
    for (const double x : frames_.synthesise(multiplied(frame, gains_.next(frame)))) {
        numbers.push_back(static_cast<float>(x * (x < 0 ? 32768 : 32767)));
    }
    Samples out;
    for (const float number : limiter_.process(numbers)) out.push_back(toPcm(number));
    return out;
}

Samples Dialogue::process(const Samples& in) {
    queue(waiting_, in);
    while (waiting_.size() >= block_samples_) queue(done_, blocks_.process(take(waiting_, block_samples_)));
    return take(done_, in.size());
}

}  // namespace model
