#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sound_feed.h"

namespace sonivex_tool {

/** The sound card to open, and what it is to play. */
struct SoundCardSettings {
    std::string device;  // as listSoundCards() names it; empty: the system's default
    int rate_hz = 48000;
};

/** An open sound card, which takes samples from a SoundFeed on a thread of its own. The destructor closes it,
 *  unless `abandon` was called. */
class SoundCard {
  public:
    SoundCard() = default;
    SoundCard(const SoundCard&) = delete;
    SoundCard& operator=(const SoundCard&) = delete;
    virtual ~SoundCard() = default;

    /** Returns true if the system says that the card is gone. Call it every now and then. */
    virtual bool isGone() = 0;
    /** Leaves the card open for the rest of the program's life. Closing waits for the card's thread, and that
     *  of a stalled card never ends. */
    virtual void abandon() = 0;
    /** Returns how long a sample waits in the card, in frames. */
    virtual int latency_frames() const = 0;
};

/** Opens sound cards. The tickets of the feed stay valid if none opens. A test opens its own. */
using OpenSoundCard =
    std::function<std::unique_ptr<SoundCard>(const SoundCardSettings&, std::shared_ptr<SoundFeed>)>;

/** Opens a card of the system. SDL2 converts to the card's own rate, format and channels.
 *  @throw Failure (NoSoundCard) that names the device and says why it cannot be opened, or that this program
 *  was built without SDL2 */
std::unique_ptr<SoundCard> openSoundCard(const SoundCardSettings& settings, std::shared_ptr<SoundFeed> feed);

/** Returns the names of the cards, in the system's order.
 *  @throw Failure (NoSoundCard) if there is no sound system, or this program was built without SDL2 */
std::vector<std::string> listSoundCards();

}  // namespace sonivex_tool
