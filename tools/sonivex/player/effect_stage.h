#pragma once

#include <cstdint>
#include <memory>

#include "filter_run.h"
#include "reframer.h"

namespace sonivex_tool {

/** One effect of a chain: cuts frames of any length into calls of the filter, and lets the rest out at the
 *  end.
 *
 *  The members throw Failure (FilterFailed), std::bad_alloc, and whatever the output throws. */
class EffectStage {
  public:
    /** Returns the AudioSpec of the output of `effect` for input of the AudioSpec `input`. The effect may
     *  change the channel count, nothing else. */
    static AudioSpec outputSpec(const AudioSpec& input, const Effect& effect);

    /** @param spec of every frame that is pushed.
     *  @param output receives the effect's output, aligned with the input. */
    EffectStage(const FilterSettings& settings, const Effect& effect,
                const std::shared_ptr<Vorlin::Plugin>& plugin, const AudioSpec& spec,
                Timeline::Output output);

    /** Pushes a frame of any length; the samples are copied. */
    void push(const AVFrame& frame);

    /** Flushes the filter, as a player does at a seek, and begins anew; see FilterRun::seek. */
    void seek();

    /** Ends the input. The output is as long as the input was, plus the delay and the tail that the settings
     *  keep. Without any input there is no output. */
    void finish();

    /** Returns the bytes of one channel's samples in a call of the effect, which works on 16 bits. */
    uint64_t callBytes() const { return static_cast<uint64_t>(call_frames_) * sizeof(int16_t); }
    int inputChannels() const { return input_channels_; }
    int outputChannels() const { return output_channels_; }

    /** Returns the filter's run, for its counts and its delay. */
    const FilterRun& run() const { return run_; }

  private:
    void pushCalls();
    void pushSilence(int64_t frames);

    int call_frames_;
    int input_channels_;
    int output_channels_;
    bool keeps_delay_;
    int64_t tail_frames_;
    Reframer waiting_;
    FilterRun run_;
    int64_t input_frames_ = 0;
};

}  // namespace sonivex_tool
