#include "source_measures.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "ear_spectra.h"
#include "responses_measures.h"
#include "speech_spectrum.h"

namespace sonivex_tool {
namespace {

constexpr double kDirect_s = 0.0025;
constexpr double kEarly_s = 0.080;
constexpr double kLongestDelay_s = 0.001;  // a large head causes 0.8 ms
constexpr Band kWaveform{.low_hz = 0.0, .high_hz = 1500.0};

using Ears = std::array<std::span<const double>, 2>;
using EarCopies = std::array<std::vector<double>, 2>;

std::size_t samplesIn(double time_s, int rate_hz) {
    return static_cast<std::size_t>(std::lround(time_s * rate_hz));
}

std::optional<double> ratio_db(double above, double below) {
    if (above <= 0.0 || below <= 0.0) return std::nullopt;
    return 10.0 * std::log10(above / below);
}

// Returns a copy that is silent outside of [from, to).
std::vector<double> onlyBetween(std::span<const double> gains, std::size_t from, std::size_t to) {
    std::vector<double> part(gains.size(), 0.0);
    for (std::size_t n = from; n < std::min(to, gains.size()); ++n) part[n] = gains[n];
    return part;
}

std::size_t directEnd(std::size_t arrival, int rate_hz) {
    return arrival + samplesIn(kDirect_s, rate_hz);
}

// The parts of both ears' responses, each at its place in time.
struct Parts {
    EarCopies direct;
    EarCopies room;
};

Parts partsOf(const Ears& ears, int rate_hz) {
    Parts parts;
    for (std::size_t ear = 0; ear < ears.size(); ++ear) {
        const std::size_t arrival = arrivalSample(ears.at(ear));
        const std::size_t end = directEnd(arrival, rate_hz);
        parts.direct.at(ear) = onlyBetween(ears.at(ear), arrival, end);
        parts.room.at(ear) = onlyBetween(ears.at(ear), end, ears.at(ear).size());
    }
    return parts;
}

std::ptrdiff_t longestLag(int rate_hz) {
    return static_cast<std::ptrdiff_t>(std::floor(kLongestDelay_s * rate_hz / EarSpectra::kLag));
}

std::optional<double> delay_us(const EarSpectra& direct, int rate_hz) {
    const std::ptrdiff_t longest = longestLag(rate_hz);
    const std::vector<double> heights = direct.crossCorrelation(kWaveform, longest, speechDensity);
    const auto highest = std::max_element(heights.begin(), heights.end());
    if (*highest <= 0.0) return std::nullopt;
    const auto lag = static_cast<double>(highest - heights.begin() - longest);
    return lag * EarSpectra::kLag / rate_hz * 1e6;
}

std::optional<double> largestCorrelation(const EarSpectra& early, const Band& band, int rate_hz) {
    const double energies = early.leftEnergy(band) * early.rightEnergy(band);
    if (energies <= 0.0) return std::nullopt;
    const std::vector<double> heights =
        early.crossCorrelation(band, longestLag(rate_hz), [](double) { return 1.0; });
    const double largest = *std::max_element(heights.begin(), heights.end()) / std::sqrt(energies);
    return std::clamp(largest, -1.0, 1.0);  // rounding can exceed 1 by a little
}

std::optional<double> levelDifference_db(const EarSpectra& spectra, const Band& band) {
    return ratio_db(spectra.leftEnergy(band), spectra.rightEnergy(band));
}

double energyOfBoth(const EarSpectra& spectra, const Band& band) {
    return spectra.leftEnergy(band) + spectra.rightEnergy(band);
}

// Twice the length of the responses puts enough bins into the lowest octave, and keeps lags from wrapping.
Fourier transformFor(std::size_t samples) {
    return Fourier(std::bit_ceil(2 * std::max<std::size_t>(samples, 4096)));
}

EarSpectra earlySpectra(const Ears& ears, int rate_hz) {
    const std::size_t from = std::min(arrivalSample(ears[0]), arrivalSample(ears[1]));
    const std::size_t length = samplesIn(kEarly_s, rate_hz);
    const auto early = [&](std::span<const double> ear) {
        return ear.subspan(std::min(from, ear.size()),
                           std::min(length, ear.size() - std::min(from, ear.size())));
    };
    return {transformFor(length), early(ears[0]), early(ears[1]), rate_hz};
}

void addRatios(const EarSpectra& direct, const EarSpectra& room, SourceMeasures& measures) {
    for (std::size_t octave = 0; octave < kOctaves_hz.size(); ++octave) {
        const Band band = octaveAround(kOctaves_hz.at(octave));
        measures.octaves.at(octave).direct_to_reverberant_db =
            ratio_db(energyOfBoth(direct, band), energyOfBoth(room, band));
    }
}

}  // namespace

std::string octaveName(int centre_hz) {
    constexpr int kKilohertz = 1000;
    if (centre_hz < kKilohertz) return std::to_string(centre_hz);
    return std::to_string(centre_hz / kKilohertz) + "k";
}

SourceMeasures measureSource(std::span<const double> left, std::span<const double> right, int rate_hz) {
    const Ears ears{left, right};
    const Fourier fourier = transformFor(std::max(left.size(), right.size()));
    const Parts parts = partsOf(ears, rate_hz);
    const EarSpectra direct(fourier, parts.direct[0], parts.direct[1], rate_hz);
    const EarSpectra room(fourier, parts.room[0], parts.room[1], rate_hz);
    const EarSpectra whole(fourier, left, right, rate_hz);
    const EarSpectra early = earlySpectra(ears, rate_hz);

    SourceMeasures measures;
    measures.delay_us = delay_us(direct, rate_hz);
    measures.level_difference = {ratio_db(directEnergy(left, rate_hz), directEnergy(right, rate_hz)),
                                 ratio_db(energyOf(left), energyOf(right))};
    addRatios(direct, room, measures);
    for (std::size_t octave = 0; octave < kOctaves_hz.size(); ++octave) {
        const Band band = octaveAround(kOctaves_hz.at(octave));
        OctaveMeasures& figures = measures.octaves.at(octave);
        figures.level_difference = {levelDifference_db(direct, band), levelDifference_db(whole, band)};
        figures.early_correlation = largestCorrelation(early, band, rate_hz);
    }
    return measures;
}

SourceMeasures measureRatios(std::span<const double> left, std::span<const double> right, int rate_hz) {
    const Fourier fourier = transformFor(std::max(left.size(), right.size()));
    const Parts parts = partsOf({left, right}, rate_hz);
    SourceMeasures measures;
    addRatios({fourier, parts.direct[0], parts.direct[1], rate_hz},
              {fourier, parts.room[0], parts.room[1], rate_hz}, measures);
    return measures;
}

double directEnergy(std::span<const double> gains, int rate_hz) {
    const std::size_t arrival = arrivalSample(gains);
    return energyOf(onlyBetween(gains, arrival, directEnd(arrival, rate_hz)));
}

}  // namespace sonivex_tool
