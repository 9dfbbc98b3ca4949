#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "sound_card.h"

namespace sonivex_tool {

// A card that does not play on is replaced or waited for:
//
//   the system says that it is gone          -> open the default card and play on there
//   it has asked for nothing for 3 s         -> open it once more, or else the default card, and leave the
//                                               stalled one behind
//   it has stalled, and no card opens        -> wait for it, and try again every second
//   it is gone and no card opens, or it has
//   asked for nothing for 10 s and no card
//   opens, or a fourth card fails within
//   15 s                                     -> Failure (NoSoundCard)
//
// Nothing is lost: what a card has not taken waits in the feed, and the position waits with it. Time in which
// this program did not run, because it was stopped or the machine was, does not count as a stall.

/** Keeps a sound card open, and replaces one that is gone or stalls. One thread calls every function. */
class CardKeeper {
  public:
    using Clock = std::chrono::steady_clock;

    /** A card that asks for no sample for so long has stalled. */
    static constexpr std::chrono::seconds kStallLimit{3};
    /** More failures than this within kFailureWindow end the play. */
    static constexpr int kMostFailures = 3;
    static constexpr std::chrono::seconds kFailureWindow{15};
    /** A card that stalls for so long ends the play if no other opens. */
    static constexpr std::chrono::seconds kLongestStall{10};
    /** The time between two attempts to open another card while one has stalled. */
    static constexpr std::chrono::seconds kRetryInterval{1};
    /** The most time that counts between two checks. What is beyond it, this program did not run. */
    static constexpr std::chrono::milliseconds kLongestStep{200};

    /** Opens the card of the settings.
     *  @throw Failure (NoSoundCard) */
    CardKeeper(OpenSoundCard open, const SoundCardSettings& settings, std::shared_ptr<SoundFeed> feed,
               Clock::time_point now);
    ~CardKeeper();
    CardKeeper(const CardKeeper&) = delete;
    CardKeeper& operator=(const CardKeeper&) = delete;

    /** Looks after the card. Call it several times in a second.
     *  @return a line for the user if the card was replaced, or is waited for.
     *  @throw Failure (NoSoundCard) if no card is left that plays */
    std::optional<std::string> check(Clock::time_point now);

    /** Returns how long a sample waits in the card, in frames. */
    int latency_frames() const { return card_ != nullptr ? card_->latency_frames() : 0; }

    /** Closes the card if it still plays, and else leaves it behind, because closing it might never end.
     *  @param patience time in which a card that plays asks for samples */
    void close(std::chrono::milliseconds patience);

  private:
    std::string replaceGone();
    std::optional<std::string> replaceStalled();
    void countFailure(const std::string& why);
    void reopen(const std::string& device);

    OpenSoundCard open_;
    SoundCardSettings settings_;
    std::shared_ptr<SoundFeed> feed_;
    std::unique_ptr<SoundCard> card_;
    uint64_t asked_frames_ = 0;
    Clock::time_point last_check_;
    Clock::duration watched_{};     // time since the beginning in which check() was called often enough
    Clock::duration last_asked_{};  // these too are points in watched time
    Clock::duration first_failure_{};
    Clock::duration next_attempt_{};
    bool is_waiting_ = false;  // for a stalled card, because no other opens
    int failures_ = 0;
};

}  // namespace sonivex_tool
