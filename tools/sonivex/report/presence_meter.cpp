#include "presence_meter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonivex_tool {
namespace {

constexpr std::size_t kWindow = StereoSpectrum::kWindow;
// Below this mean power, rounding to 16 bits would be measured: -80 dBFS.
constexpr double kLeastPower = 1e-8;

using Samples = std::vector<std::complex<float>>;

void append(Samples& to, std::span<const float> samples) {
    for (std::size_t first = 0; first + 1 < samples.size(); first += 2)
        to.emplace_back(samples[first], samples[first + 1]);
}

}  // namespace

PresenceMeter::PresenceMeter(int rate_hz) : rate_hz_(rate_hz) {}

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
        const auto input = std::span<const std::complex<float>>(input_).subspan(done, kWindow);
        double power = 0.0;
        for (const std::complex<float>& sample : input)
            power += static_cast<double>(std::norm(sample)) / static_cast<double>(kWindow);
        before_.transform(input);
        after_.transform(std::span<const std::complex<float>>(output_).subspan(done, kWindow));
        double product = 0.0;
        double square = 0.0;
        const auto add = [&](const std::complex<double>& in, const std::complex<double>& out, double side) {
            const double own = std::norm(in);
            if (own <= 0.0) return;
            const double magnitude = std::sqrt(own);
            const double expected = own / (own + side) * magnitude;
            product += expected * (std::sqrt(std::norm(out)) - magnitude);
            square += expected * expected;
        };
        for (std::size_t bin = 1; bin < kWindow / 2; ++bin) {
            const StereoSpectrum::Bin in = before_.at(bin);
            const StereoSpectrum::Bin out = after_.at(bin);
            const double side = std::norm(in.left - in.right);
            add(in.left, out.left, side);
            add(in.right, out.right, side);
        }
        PresenceReading& reading = readings_.emplace_back();
        const auto middle = static_cast<double>(kWindow) * (static_cast<double>(readings_.size()) - 0.5);
        reading.time_s = middle / rate_hz_;
        if (power > kLeastPower && square > 0.0) reading.presence = product / square;
        done += kWindow;
    }
    const auto drop = [done](Samples& samples) {
        samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(done));
    };
    drop(input_);
    drop(output_);
}

std::optional<double> meanPresence(const std::vector<PresenceReading>& readings) {
    double sum = 0.0;
    int count = 0;
    for (const PresenceReading& reading : readings) {
        if (!reading.presence) continue;
        sum += *reading.presence;
        ++count;
    }
    return count > 0 ? std::optional(sum / count) : std::nullopt;
}

}  // namespace sonivex_tool
