#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio_source.h"
#include "conditioner.h"
#include "console.h"
#include "effect_chain.h"
#include "render_settings.h"

namespace sonivex_tool {

/** The takers of what a pass produces. Each is called on the thread that runs the pass, and may throw. */
struct PassOutputs {
    std::function<void(const AVFrame&)> decoded;   // the input, with finite samples only
    std::function<void(FramePtr)> processed;       // the output of the effects, all of one spec
    std::function<void(PacketPtr)> copied;         // packets of other streams, in the order of the file
    std::function<void(const std::string&)> note;  // lines for the user
};

/** Holds the counts of a pass. */
struct PassCounts {
    int64_t input_frames = 0;  // as decoded, at the rates of their own
    double input_seconds = 0.0;
    ChainCounts filters;
    ConditionerCounts samples;
};

/** Runs the audio of a source through the chain of effects once, from its beginning to its end:
 *
 *      decode (on a thread of its own) -> convert to the chain's 16 bits, rate and layout -> effects
 *
 *  Where the source changes its rate, layout or sample format, the effects let out what they hold and start
 *  afresh, as in a player. The output keeps the rate and layout that it began with. */
class EffectPass {
  public:
    /** Plans the conversion and makes the filters.
     *  @param source not read yet; must outlive this object
     *  @throw Failure (UnsupportedAudio, FilterFailed), std::bad_alloc */
    EffectPass(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
               AudioSource& source, PassOutputs outputs);

    /** Returns what is converted for the effects so far, one sentence each, without repetition. */
    const std::vector<std::string>& conversions() const { return conversions_; }
    /** Returns the AudioSpec of the sound that the first effect gets at the beginning. */
    const AudioSpec& workSpec() const { return first_plan_.work; }
    /** Returns the AudioSpec of the output. */
    AudioSpec outputSpec() const { return outputSpec(first_plan_); }
    /** Returns true if some filter passes all audio through. */
    bool isBypassed() const { return chain_->isBypassed(); }

    /** Runs to the end of the source. Call it once.
     *  @throw Failure, with the exit code of a pending signal among others; std::bad_alloc; whatever the
     *  outputs throw */
    PassCounts run(Console& console);

  private:
    AudioSpec outputSpec(const ConversionPlan& plan) const;
    ConversionPlan planFor(const AudioSpec& spec) const;
    void start(const AudioSpec& spec);
    void end();
    void push(FramePtr frame);

    RenderSettings settings_;
    std::shared_ptr<Vorlin::Plugin> plugin_;
    AudioSource& source_;
    PassOutputs outputs_;
    ConversionPlan first_plan_;
    AudioSpec spec_;  // of the input at present
    std::unique_ptr<Conditioner> conditioner_;
    std::unique_ptr<EffectChain> chain_;
    std::vector<std::string> conversions_;
    PassCounts counts_;
};

}  // namespace sonivex_tool
