#include "fade.h"

#include <cmath>
#include <numbers>

namespace sonivex_tool {

float Fade::next() {
    if (is_up_ && phase_ < length_) ++phase_;
    if (!is_up_ && phase_ > 0) --phase_;
    if (phase_ == 0) return 0.0F;
    if (phase_ == length_) return 1.0F;
    const double part = static_cast<double>(phase_) / length_;
    return static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * part));
}

}  // namespace sonivex_tool
