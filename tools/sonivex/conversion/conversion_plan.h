#pragma once

#include <string>
#include <vector>

#include "audio_spec.h"
#include "conversion_settings.h"
#include "effect.h"

namespace sonivex_tool {

/** How audio is converted for a chain of effects. */
struct ConversionPlan {
    AudioSpec converted;  // after mixing and resampling: interleaved 16-bit samples
    AudioSpec work;       // what the first effect gets: `converted`, maybe with silent channels at its end
    std::vector<std::string> notes;  // for the user, one line each: what is converted to what

    /** Returns true if silent channels were added, which `restored` takes away after the effects. */
    bool isPadded() const { return work.channels() != converted.channels(); }
    /** Returns the AudioSpec of the audio after `restored`.
     *  @param from_chain AudioSpec of the chain's output */
    AudioSpec restoredSpec(AudioSpec from_chain) const;
    /** Takes the added channels away from a frame of the chain's output. Without any it returns the frame
     *  itself.
     *  @throw std::bad_alloc */
    FramePtr restored(FramePtr frame) const;
};

/** Chooses the sample rate and layout in which a chain of effects gets audio of the AudioSpec `input`. See
 *  chooseRate_hz and chooseLayout for the rules.
 *
 *  @throw Failure (UnsupportedAudio) if none makes it fit, if one is needed in spite of `strict`, or if the
 *  chain does not take the rate or layout of the settings; Failure (Usage) if the settings name no layout */
ConversionPlan planConversion(const AudioSpec& input, const std::vector<const Effect*>& chain,
                              const ConversionSettings& settings);

}  // namespace sonivex_tool
