#include "conditioner.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "channel_positions.h"
#include "odd_samples.h"

namespace sonivex_tool {
namespace {

std::string percent(uint64_t part, uint64_t whole) {
    const double share =
        100.0 * static_cast<double>(part) / static_cast<double>(std::max<uint64_t>(whole, 1));
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.2g %%", share);
    return text.data();
}

std::string counted(uint64_t samples, const std::string& one, const std::string& more) {
    return std::to_string(samples) + " sample" + (samples == 1 ? " " + one : "s " + more);
}

}  // namespace

std::vector<std::string> notesOn(const ConditionerCounts& counts) {
    std::vector<std::string> notes;
    if (counts.not_finite > 0) {
        notes.push_back(counted(counts.not_finite, "of IN is", "of IN are") +
                        " NaN or infinite; silence replaces " + (counts.not_finite == 1 ? "it" : "them"));
    }
    if (counts.above_full_scale > 0) {
        notes.push_back(std::to_string(counts.above_full_scale) +
                        (counts.above_full_scale == 1 ? " sample" : " samples") + " (" +
                        percent(counts.above_full_scale, counts.samples) +
                        ") above full scale clipped before the effect");
    }
    return notes;
}

Conditioner::Conditioner(const ConversionPlan& plan, bool dither)
    : converter_(plan.converted, {.dither = dither}), plan_(plan) {}

FramePtr Conditioner::repair(FramePtr frame) {
    not_finite_ += silenceNonFinite(frame);
    return frame;
}

FramePtr Conditioner::placed(FramePtr frame) {
    if (frame == nullptr) return nullptr;
    samples_ += static_cast<uint64_t>(frame->nb_samples) * static_cast<uint64_t>(plan_.converted.channels());
    return plan_.isPadded() ? withChannelsOf(*frame, plan_.work) : std::move(frame);
}

FramePtr Conditioner::convert(FramePtr frame) {
    return placed(converter_.convert(std::move(frame)));
}

FramePtr Conditioner::flush() {
    return placed(converter_.flush());
}

ConditionerCounts Conditioner::counts() const {
    return {samples_, converter_.clippedSamples(), not_finite_};
}

}  // namespace sonivex_tool
