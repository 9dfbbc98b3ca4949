#include "effect_queue.h"

#include <algorithm>

namespace Vorlin {

EffectQueue::EffectQueue(const FilterTiming& timing) : mBlock(std::max(timing.block_frames, 1)) {
    if (timing.own_delay_frames > 0) mInside.push_back({-int64_t{timing.own_delay_frames}, 0});
}

std::vector<Span> EffectQueue::answer(Span call) {
    mInside.push_back(call);
    mQueued += call.frames();
    mReady += mQueued / mBlock * mBlock;
    mQueued %= mBlock;
    if (mReady < call.frames()) return {};

    std::vector<Span> answer;
    mReady -= call.frames();
    for (int64_t left = call.frames(); left > 0;) {
        Span& oldest = mInside.front();
        const int64_t taken = std::min(left, oldest.frames());
        answer.push_back({oldest.begin, oldest.begin + taken});
        oldest.begin += taken;
        left -= taken;
        if (oldest.frames() == 0) mInside.pop_front();
    }
    return answer;
}

int EffectQueue::answeredOf(int frames) const {
    const int64_t ready = mReady + (mQueued + frames) / mBlock * mBlock;
    return static_cast<int>(std::min<int64_t>(ready, frames));
}

int EffectQueue::callsUntil(int64_t end, int call_frames) const {
    const auto is_before_end = [end](const Span& span) { return span.begin < end && span.frames() > 0; };
    EffectQueue trial = *this;
    int calls = 0;
    while (std::any_of(trial.mInside.begin(), trial.mInside.end(), is_before_end)) {
        trial.answer({end, end + call_frames});
        ++calls;
    }
    return calls;
}

}  // namespace Vorlin
