#include "level_plan.h"

#include <array>
#include <cstdio>

namespace sonivex_tool {
namespace {

// The loudness that a limiter may take before a note says so.
constexpr double kUnremarkable_lu = 0.5;

// The limiter's first distance from the ceiling, which suffices for most music.
constexpr double kDistance_db = 0.1;
// Left for the rounding to 16 bits, which comes after the limiter.
constexpr double kRounding_db = 0.02;

std::string oneDecimal(double number) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f", number);
    return text.data();
}

}  // namespace

LevelPlan planLevel(const Loudness& before, const LevelSettings& settings) {
    LevelPlan plan;
    plan.ceiling_dbtp = settings.true_peak_dbtp;
    plan.limit_dbtp = plan.ceiling_dbtp - kDistance_db;
    if (!before.integrated_lufs) {
        plan.note = "the output is too quiet for its loudness to be measured; its level stays";
        return plan;
    }
    plan.gain_db = settings.target_lufs.value() - *before.integrated_lufs;
    plan.limits = !before.true_peak_dbtp || *before.true_peak_dbtp + plan.gain_db > plan.ceiling_dbtp;
    return plan;
}

bool lowerLimit(LevelPlan& plan, const Loudness& trial) {
    const double highest_dbtp = plan.ceiling_dbtp - kRounding_db;
    if (!plan.limits || !trial.true_peak_dbtp || *trial.true_peak_dbtp <= highest_dbtp) return false;
    plan.limit_dbtp -= *trial.true_peak_dbtp - highest_dbtp;
    return true;
}

std::optional<std::string> levelNote(const LevelPlan& plan, const LevelSettings& settings,
                                     const Loudness& after) {
    const double target_lufs = settings.target_lufs.value();
    if (!plan.limits || !after.integrated_lufs || *after.integrated_lufs > target_lufs - kUnremarkable_lu)
        return std::nullopt;
    return "the limiter holds the true peak at " + oneDecimal(plan.ceiling_dbtp) + " dBTP; the output has " +
           oneDecimal(*after.integrated_lufs) + " LUFS, not " + oneDecimal(target_lufs);
}

}  // namespace sonivex_tool
