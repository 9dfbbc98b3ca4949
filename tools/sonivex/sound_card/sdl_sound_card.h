#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sound_card.h"

namespace sonivex_tool {

/** Opens a card with SDL2. See openSoundCard. */
std::unique_ptr<SoundCard> openSdlSoundCard(const SoundCardSettings& settings,
                                            std::shared_ptr<SoundFeed> feed);

/** Returns the names of the cards that SDL2 knows. See listSoundCards. */
std::vector<std::string> listSdlSoundCards();

}  // namespace sonivex_tool
