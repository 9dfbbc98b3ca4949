#include "spectrogram.h"

#include <algorithm>
#include <cmath>

namespace sonivex_tool {
namespace {

constexpr std::size_t kWindow = StereoSpectrum::kWindow;
constexpr std::size_t kHop = kWindow / 2;
constexpr std::size_t kRows = 128;
// More brightnesses than this make the file larger, but the picture no clearer.
constexpr int kBrightnesses = 32;
constexpr int kBrightest = 255;

}  // namespace

SpectrogramMeter::SpectrogramMeter(int rate_hz, std::size_t most_columns)
    : rate_hz_(rate_hz), most_columns_(most_columns) {
    samples_.reserve(kWindow);
    for (std::size_t row = 0; row <= kRows; ++row) {
        const double place = static_cast<double>(row) / static_cast<double>(kRows);
        const double frequency_hz = kLowestRow_hz * std::pow(kHighestRow_hz / kLowestRow_hz, place);
        const auto bin =
            static_cast<std::size_t>(std::lround(frequency_hz * static_cast<double>(kWindow) / rate_hz));
        first_bins_.push_back(std::min(bin, kWindow / 2));
    }
}

void SpectrogramMeter::halve() {
    const std::size_t count = columns_.size() / 2;
    for (std::size_t i = 0; i < count; ++i) {
        Column sum = std::move(columns_[2 * i]);
        for (std::size_t row = 0; row < kRows; ++row) sum.powers[row] += columns_[2 * i + 1].powers[row];
        columns_[i] = std::move(sum);
    }
    columns_.resize(count);
    windows_in_column_ *= 2;
    in_last_ = windows_in_column_;
}

void SpectrogramMeter::analyse() {
    if (columns_.empty() || in_last_ == windows_in_column_) {
        if (columns_.size() == most_columns_) halve();
        columns_.push_back({std::vector<double>(kRows)});
        in_last_ = 0;
    }
    ++in_last_;
    spectrum_.transform(samples_);
    for (std::size_t row = 0; row < kRows; ++row) {
        const std::size_t first = first_bins_[row];
        const std::size_t end = std::max(first + 1, first_bins_[row + 1]);
        double highest = 0.0;
        for (std::size_t bin = first; bin < end && bin < kWindow / 2; ++bin)
            highest = std::max(highest, spectrum_.at(bin).power());
        columns_.back().powers[row] += highest;
    }
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(kHop));
    pending_ = 0;
}

void SpectrogramMeter::add(std::span<const float> samples) {
    for (std::size_t first = 0; first + 1 < samples.size(); first += 2) {
        samples_.emplace_back(samples[first], samples[first + 1]);
        ++pending_;
        if (samples_.size() == kWindow) analyse();
    }
}

double SpectrogramMeter::level_db(double power) const {
    const double share = power / (StereoSpectrum::kFullScale * StereoSpectrum::kFullScale);
    return share > 0.0 ? 10.0 * std::log10(share) : 2.0 * kLowestShown_db;
}

sonivex_plotting::GreyImage SpectrogramMeter::finish() {
    if (pending_ > 0) {
        samples_.resize(kWindow);
        analyse();
    }
    sonivex_plotting::GreyImage image;
    image.width = static_cast<int>(columns_.size());
    image.height = static_cast<int>(kRows);
    image.values.resize(columns_.size() * kRows);
    for (std::size_t column = 0; column < columns_.size(); ++column) {
        const bool is_last = column + 1 == columns_.size();
        const auto windows = static_cast<double>(is_last ? in_last_ : windows_in_column_);
        for (std::size_t row = 0; row < kRows; ++row) {
            const double level = level_db(columns_[column].powers[row] / windows);
            const double share =
                std::clamp((level - kLowestShown_db) / (kHighestShown_db - kLowestShown_db), 0.0, 1.0);
            const auto step = static_cast<int>(std::lround(share * (kBrightnesses - 1)));
            image.values[(kRows - 1 - row) * columns_.size() + column] =
                static_cast<std::uint8_t>(step * kBrightest / (kBrightnesses - 1));
        }
    }
    return image;
}

double SpectrogramMeter::column_s() const {
    return static_cast<double>(windows_in_column_ * kHop) / rate_hz_;
}

}  // namespace sonivex_tool
