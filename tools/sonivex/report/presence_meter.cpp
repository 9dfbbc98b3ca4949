#include "presence_meter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace sonivex_tool {
namespace {

constexpr std::size_t kWindow = 2048;
// Below this mean power, rounding to 16 bits would be measured: -80 dBFS.
constexpr double kLeastPower = 1e-8;

using Spectrum = std::vector<std::complex<double>>;

// The spectra of left and right at one bin, from one transform of left + i right.
std::array<std::complex<double>, 2> channelsAt(const Spectrum& spectrum, std::size_t bin) {
    const std::complex<double> here = spectrum[bin];
    const std::complex<double> mirrored = std::conj(spectrum[(kWindow - bin) % kWindow]);
    return {(here + mirrored) / 2.0, (here - mirrored) / std::complex<double>(0.0, 2.0)};
}

void append(Spectrum& to, std::span<const float> samples) {
    for (std::size_t first = 0; first + 1 < samples.size(); first += 2)
        to.emplace_back(samples[first], samples[first + 1]);
}

}  // namespace

PresenceMeter::PresenceMeter(int rate_hz) : rate_hz_(rate_hz), fourier_(kWindow), window_(kWindow) {
    for (std::size_t n = 0; n < kWindow; ++n) {
        const double turn = 2.0 * std::numbers::pi * static_cast<double>(n) / static_cast<double>(kWindow);
        window_[n] = 0.5 - 0.5 * std::cos(turn);
    }
}

void PresenceMeter::addInput(std::span<const float> samples) {
    append(input_, samples);
    analyse();
}

void PresenceMeter::addOutput(std::span<const float> samples) {
    append(output_, samples);
    analyse();
}

void PresenceMeter::analyse() {
    std::size_t done = 0;
    while (std::min(input_.size(), output_.size()) - done >= kWindow) {
        Spectrum before(kWindow);
        Spectrum after(kWindow);
        double power = 0.0;
        for (std::size_t n = 0; n < kWindow; ++n) {
            before[n] = input_[done + n] * window_[n];
            after[n] = output_[done + n] * window_[n];
            power += std::norm(input_[done + n]) / static_cast<double>(kWindow);
        }
        fourier_.transform(before);
        fourier_.transform(after);
        double product = 0.0;
        double square = 0.0;
        for (std::size_t bin = 1; bin < kWindow / 2; ++bin) {
            const auto in = channelsAt(before, bin);
            const auto out = channelsAt(after, bin);
            const double side = std::norm(in[0] - in[1]);
            for (std::size_t channel = 0; channel < in.size(); ++channel) {
                const double own = std::norm(in[channel]);
                if (own <= 0.0) continue;
                const double expected = own / (own + side) * std::sqrt(own);
                product += expected * (std::abs(out[channel]) - std::abs(in[channel]));
                square += expected * expected;
            }
        }
        PresenceReading& reading = readings_.emplace_back();
        const auto middle = static_cast<double>(kWindow) * (static_cast<double>(readings_.size()) - 0.5);
        reading.time_s = middle / rate_hz_;
        if (power > kLeastPower && square > 0.0) reading.presence = product / square;
        done += kWindow;
    }
    const auto drop = [done](Spectrum& samples) {
        samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(done));
    };
    drop(input_);
    drop(output_);
}

}  // namespace sonivex_tool
