#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "aem_effect.h"

namespace fuzz {

/** Sends a stream through an effect in calls of any lengths, and through a second handle in calls of whole
 *  blocks, which have no delay. Requires that the effect puts out what the second handle does, interrupted
 *  only by the silent calls that its header foretells:
 *
 *      queued += call;  ready += queued rounded down to blocks;  served if ready >= call, otherwise silent
 *
 *  Both handles must be new or reset. */
class StreamCheck {
  public:
    StreamCheck(const AemEffect& effect, const AemEffect& reference)
        : effect_(effect), reference_(reference) {}

    /** Makes one call with this input, [frames][width_in]. */
    void call(std::span<const std::int16_t> in);

  private:
    bool takeWithoutLoss(int frames);
    void renderReference(std::span<const std::int16_t> in);
    void requireReferenceOutput(std::span<const std::int16_t> out);

    const AemEffect& effect_;
    const AemEffect& reference_;
    bool has_lost_ = false;  // a ring was full, so that samples got lost
    std::int64_t queued_frames_ = 0;
    std::int64_t ready_frames_ = 0;
    std::vector<std::int16_t> waiting_;   // input of less than a block
    std::vector<std::int16_t> expected_;  // output of the reference
    std::size_t compared_ = 0;            // samples of it
};

}  // namespace fuzz
