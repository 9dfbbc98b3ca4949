#include "sound_plan.h"

#include <algorithm>
#include <cmath>

namespace sonivex_tool {

SoundPlan planSound(double length_s, int versions, const WantedStretch& wanted) {
    constexpr double kBits = 8.0;
    const double budget_bits = kBits * static_cast<double>(kSoundBudget_bytes) / std::max(versions, 1);
    SoundPlan plan;
    plan.start_s = std::clamp(wanted.start_s.value_or(0.0), 0.0, length_s);
    plan.length_s = std::min(wanted.length_s.value_or(length_s), length_s - plan.start_s);
    if (plan.length_s * kLowestBitRate > budget_bits) {
        const double excerpt_s = budget_bits / kExcerptBitRate;
        // A start that the user chose stays.
        if (!wanted.start_s) plan.start_s += (plan.length_s - excerpt_s) / 2.0;
        plan.length_s = excerpt_s;
        plan.rate_bps = kExcerptBitRate;
    } else if (plan.length_s * kHighestBitRate > budget_bits) {
        plan.rate_bps = static_cast<int>(std::floor(budget_bits / plan.length_s));
    }
    plan.is_excerpt = plan.start_s > 0.0 || plan.length_s < length_s;
    return plan;
}

}  // namespace sonivex_tool
