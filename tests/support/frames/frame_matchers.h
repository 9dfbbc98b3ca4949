#pragma once

#include "support/frames/audio_frames.h"
#include "support/signals/signal_matchers.h"

namespace test {

/** Succeeds if a frame holds these interleaved samples, see sameSignal. A null frame holds nothing. */
inline testing::AssertionResult holdsSamples(const AVFrame* frame, const Pcm& expected) {
    if (frame == nullptr) return testing::AssertionFailure() << "there is no frame";
    return sameSignal(samplesOf(frame), expected,
                      {.channels = frame->ch_layout.nb_channels, .rate_hz = frame->sample_rate});
}

}  // namespace test
