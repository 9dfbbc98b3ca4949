#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "effect_stage.h"

namespace sonivex_tool {

/** The fate of the calls of all filters of a chain. */
struct ChainCounts {
    uint64_t pushed = 0;
    uint64_t dropped = 0;
    uint64_t bypassed = 0;
    uint64_t flushes = 0;
    int64_t filled_frames = 0;  // samples per channel of the silence that replaced dropped calls
    int64_t delay_frames = 0;   // of all filters together
    /** Bytes that the dumps should hold: of every call that was neither dropped nor passed through. */
    uint64_t dump_input_bytes = 0;
    uint64_t dump_output_bytes = 0;
};

/** Runs audio of one spec through several filters in a row, one for each effect.
 *
 *  Each filter's delay is removed before the next one, so the output is aligned with the input however many
 *  there are. With `keep_delay` the delays add up. The members throw as those of EffectStage do. */
class EffectChain {
  public:
    /** Returns the AudioSpec of the output for input of the AudioSpec `input`. */
    static AudioSpec outputSpec(const AudioSpec& input, const std::vector<const Effect*>& chain);

    /** @param spec of every frame that is pushed.
     *  @param output receives the output of the last effect. */
    EffectChain(const FilterSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                const AudioSpec& spec, const Timeline::Output& output);

    /** Pushes a frame of any length. */
    void push(const AVFrame& frame);
    /** Flushes all filters, as a player does at a seek, and begins anew; see FilterRun::seek. */
    void seek();
    /** Ends the input; see EffectStage::finish. */
    void finish();

    /** Returns true if some filter passes all audio through. */
    bool isBypassed() const;
    /** Returns the counts of all filters so far. */
    ChainCounts counts() const;

  private:
    std::vector<std::unique_ptr<EffectStage>> stages_;  // in the order of the chain
};

}  // namespace sonivex_tool
