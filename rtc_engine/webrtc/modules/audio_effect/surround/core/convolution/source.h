// One source of a layout: an input channel, and where its responses to the two ears have their places.
//
// Every pair of a source and an ear has a number, that of the agent (IRAgent.h) which stands for it in the
// scalar definition. In a bank (convolution/) it is a lane: with both ears [ear][source], of two sources
// each; with one ear a source, left and right in turn, [pair][ear].
#pragma once

#include <cstddef>

namespace sonivex {

inline constexpr int kNoAgent = -1;

struct Source {
    std::size_t plane;  // input channel
    int left_agent;     // or kNoAgent
    int right_agent;
};

inline bool hasBothEars(const Source& source) {
    return source.left_agent != kNoAgent && source.right_agent != kNoAgent;
}

/** Of a source that only one ear hears. */
inline int onlyAgent(const Source& source) {
    return source.left_agent != kNoAgent ? source.left_agent : source.right_agent;
}

}  // namespace sonivex
