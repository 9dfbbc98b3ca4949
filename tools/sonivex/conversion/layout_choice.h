#pragma once

#include <optional>
#include <string>
#include <vector>

#include "audio_spec.h"
#include "effect.h"

namespace sonivex_tool {

/** The layouts on the way to the effects. */
struct LayoutChoice {
    AVChannelLayout mixed{};  // to which the audio is mixed
    AVChannelLayout work{};   // of the first effect's input: `mixed`, maybe with silent channels at the end
};

/** Returns the channel counts that the whole chain takes: the first effect the count itself, and each other
 *  effect what the one before makes of it. In ascending order. */
std::vector<int> channelsOfChain(const std::vector<const Effect*>& chain);

/** Returns true if every effect of the chain keeps every channel in its place. Such a chain does not ask
 *  which loudspeaker a channel belongs to. */
bool keepsChannels(const std::vector<const Effect*>& chain);

/** Chooses the layout in which a chain gets audio of the layout `input`.
 *
 *  - A chain that keeps every channel in its place gets the audio as it is, beside silent channels if it
 *    takes only more channels than there are.
 *  - Otherwise the audio is mixed (see mixing_matrix.h): mono and stereo stay, up to six loudspeakers become
 *    5.1, and more, or six of which some are beside and some behind the listener, become 7.1.
 *  - A chain that takes only two channels gets stereo.
 *  @param input in native order, or unspecified with a count that the chain takes
 *  @return nothing if the chain takes no such audio */
std::optional<LayoutChoice> chooseLayout(const AVChannelLayout& input,
                                         const std::vector<const Effect*>& chain);

}  // namespace sonivex_tool
