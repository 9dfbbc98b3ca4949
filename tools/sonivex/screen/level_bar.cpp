#include "level_bar.h"

#include <algorithm>
#include <cmath>

namespace sonivex_tool {

std::string levelBar(std::optional<double> level, std::optional<double> peak, double lowest, double highest,
                     int columns) {
    if (columns <= 0) return {};
    std::string bar(static_cast<size_t>(columns), '.');
    const auto place = [&](double value) {
        const double part = std::clamp((value - lowest) / (highest - lowest), 0.0, 1.0);
        return static_cast<size_t>(std::lround(part * columns));
    };
    if (level) std::fill_n(bar.begin(), place(*level), '=');
    if (peak && *peak >= lowest) bar[std::min(place(*peak), bar.size() - 1)] = '|';
    return bar;
}

}  // namespace sonivex_tool
