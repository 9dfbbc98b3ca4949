#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "sound_card.h"

namespace sonivex_tool {

// What becomes of a card that does not play on:
//
//   the system says that it is gone          -> open the default card and play on there
//   it has asked for nothing for 3 s         -> leave it behind, open the default card and play on there
//   no card opens, or a fourth card fails
//   within ten seconds                       -> Failure (NoSoundCard)
//
// Nothing is lost: what a card has not taken waits in the feed, and the position waits with it.

/** Keeps a sound card open, and replaces one that is gone or stalls. One thread calls every function. */
class CardKeeper {
  public:
    using Clock = std::chrono::steady_clock;

    /** A card that asks for no sample for so long has stalled. */
    static constexpr std::chrono::seconds kStallLimit{3};
    /** More failures than this within kFailureWindow end the play. */
    static constexpr int kMostFailures = 3;
    static constexpr std::chrono::seconds kFailureWindow{10};

    /** Opens the card of the settings.
     *  @throw Failure (NoSoundCard) */
    CardKeeper(OpenSoundCard open, const SoundCardSettings& settings, std::shared_ptr<SoundFeed> feed,
               Clock::time_point now);
    ~CardKeeper();
    CardKeeper(const CardKeeper&) = delete;
    CardKeeper& operator=(const CardKeeper&) = delete;

    /** Looks after the card. Call it several times in a second.
     *  @return a line for the user if the card was replaced.
     *  @throw Failure (NoSoundCard) if no card is left that plays */
    std::optional<std::string> check(Clock::time_point now);

    /** Returns how long a sample waits in the card, in frames. */
    int latency_frames() const { return card_ != nullptr ? card_->latency_frames() : 0; }

    /** Closes the card if it still plays, and else leaves it behind, because closing it might never end.
     *  @param patience time in which a card that plays asks for samples */
    void close(std::chrono::milliseconds patience);

  private:
    std::string replace(const std::string& why, Clock::time_point now);

    OpenSoundCard open_;
    SoundCardSettings settings_;
    std::shared_ptr<SoundFeed> feed_;
    std::unique_ptr<SoundCard> card_;
    uint64_t asked_frames_ = 0;
    Clock::time_point last_asked_;
    int failures_ = 0;
    Clock::time_point first_failure_;
};

}  // namespace sonivex_tool
