#include "axis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace sonivex_plotting {

namespace {
constexpr double kRounding = 1e-9;  // of quotients that should be whole
}

double Axis::place(double value) const {
    if (is_logarithmic) return std::log(value / low) / std::log(high / low);
    return (value - low) / (high - low);
}

double niceStep(double range, double count) {
    const double rough = range / count;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= rough * (1.0 - kRounding)) return factor * power;
    }
    return 10.0 * power;
}

Axis linearAxis(double low, double high, double step, const std::string& label) {
    int decimals = 0;
    for (double rest = step; std::abs(rest - std::round(rest)) > kRounding; rest *= 10.0) ++decimals;
    Axis axis{.low = low, .high = high, .label = label};
    const auto first = std::lround(std::ceil(low / step - kRounding));
    const auto last = std::lround(std::floor(high / step + kRounding));
    for (long i = first; i <= last; ++i) {
        const double value = static_cast<double>(i) * step;
        axis.ticks.push_back({value, fixed(value, decimals)});
    }
    return axis;
}

Axis logarithmicAxis(double low, double high, const std::vector<Tick>& ticks, const std::string& label) {
    return {.low = low, .high = high, .is_logarithmic = true, .label = label, .ticks = ticks};
}

Axis frequencyAxis(double low_hz, double high_hz) {
    std::vector<Tick> ticks;
    for (const double decade_hz : {10.0, 100.0, 1000.0, 10000.0}) {
        for (const double factor : {1.0, 2.0, 5.0}) {
            const double value_hz = decade_hz * factor;
            if (value_hz < std::max(low_hz, 20.0) || value_hz > std::min(high_hz, 20000.0)) continue;
            const bool is_thousands = value_hz >= 1000.0;
            ticks.push_back(
                {value_hz, is_thousands ? fixed(value_hz / 1000.0, 0) + "k" : fixed(value_hz, 0)});
        }
    }
    return logarithmicAxis(low_hz, high_hz, ticks, "frequency (Hz)");
}

std::string fixed(double value, int decimals) {
    // Rounding here keeps a negative value that rounds to zero from becoming -0.
    const double scale = std::pow(10.0, decimals);
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", decimals, std::round(value * scale) / scale + 0.0);
    return text.data();
}

}  // namespace sonivex_plotting
