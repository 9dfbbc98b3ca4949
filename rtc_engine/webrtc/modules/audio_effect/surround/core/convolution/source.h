// One source of a layout: an input channel and the numbers of its responses to the two ears.
//
// Every pair of a source and an ear has a number: that of the agent (IRAgent.h) that convolves it in the
// scalar reference. In a bank (convolution/) the pair is a lane [row][channel]:
//
//   sources that both ears hear   [ear][source], up to two sources in a bank
//   sources that one ear hears    [pair][ear], left and right alternate
//
// A source that both ears hear through equal responses has one lane for both ears.
#pragma once

#include <cstddef>

namespace sonivex {

/** Agent number of an ear that does not hear the source. */
inline constexpr int kNoAgent = -1;

/** An input channel and its agents at the two ears. */
struct Source {
    std::size_t plane;  // input channel
    int left_agent;     // or kNoAgent
    int right_agent;    // or kNoAgent
};

/** True if both ears hear the source. [any, concurrent] real-time safe */
inline bool hasBothEars(const Source& source) {
    return source.left_agent != kNoAgent && source.right_agent != kNoAgent;
}

/** Agent of a source that only one ear hears. [any, concurrent] real-time safe */
inline int onlyAgent(const Source& source) {
    return source.left_agent != kNoAgent ? source.left_agent : source.right_agent;
}

}  // namespace sonivex
