#include "card_keeper.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "failure.h"

namespace sonivex_tool {

CardKeeper::CardKeeper(OpenSoundCard open, const SoundCardSettings& settings, std::shared_ptr<SoundFeed> feed,
                       Clock::time_point now)
    : open_(std::move(open)),
      settings_(settings),
      feed_(std::move(feed)),
      card_(open_(settings_, feed_)),
      last_check_(now) {}

CardKeeper::~CardKeeper() {
    constexpr std::chrono::milliseconds kPatience{500};
    close(kPatience);
}

std::optional<std::string> CardKeeper::check(Clock::time_point now) {
    watched_ += std::min<Clock::duration>(now - last_check_, kLongestStep);
    last_check_ = now;
    if (card_->isGone()) return replaceGone();
    if (feed_->framesAsked() != asked_frames_) {
        asked_frames_ = feed_->framesAsked();
        last_asked_ = watched_;
        if (std::exchange(is_waiting_, false)) return "the sound card plays again";
    }
    if (watched_ - last_asked_ < kStallLimit) return std::nullopt;
    return replaceStalled();
}

std::string CardKeeper::replaceGone() {
    const std::string why = "the sound card is gone";
    card_.reset();
    countFailure(why);
    try {
        reopen("");
    } catch (const Failure& failure) {
        throw Failure(failure.exitCode(), why + ", and no other plays: " + failure.what());
    }
    return why + "; playing goes on with the default one";
}

std::optional<std::string> CardKeeper::replaceStalled() {
    const std::string why = "the sound card has stalled";
    if (is_waiting_ && watched_ < next_attempt_) return std::nullopt;
    if (!is_waiting_) countFailure(why);
    // The user's card may only have had a short trouble. If it fails again soon, the default one is better.
    if (failures_ == 1 && !settings_.device.empty()) {
        try {
            reopen(settings_.device);
            return why + "; it was opened again, and playing goes on with it";
        } catch (const Failure&) {
            // The default one is next.
        }
    }
    try {
        reopen("");
    } catch (const Failure& failure) {
        if (watched_ - last_asked_ >= kLongestStall)
            throw Failure(failure.exitCode(), why + ", and no other plays: " + failure.what());
        next_attempt_ = watched_ + kRetryInterval;
        if (std::exchange(is_waiting_, true)) return std::nullopt;
        return why + ", and no other plays; waiting for it";
    }
    return why + "; playing goes on with the default one";
}

void CardKeeper::countFailure(const std::string& why) {
    if (failures_ == 0 || watched_ - first_failure_ > kFailureWindow) {
        failures_ = 0;
        first_failure_ = watched_;
    }
    if (++failures_ > kMostFailures)
        throw Failure(ExitCode::NoSoundCard, why + ", and those that replaced it have failed, too");
}

// Opens a card in the place of one that is gone or has stalled. Throws a Failure if it does not open; a
// stalled card is kept then, and may play on.
void CardKeeper::reopen(const std::string& device) {
    SoundCardSettings settings = settings_;
    settings.device = device;
    std::unique_ptr<SoundCard> card = open_(settings, feed_);
    if (card_ != nullptr) card_->abandon();
    card_ = std::move(card);
    settings_ = std::move(settings);
    is_waiting_ = false;
    asked_frames_ = feed_->framesAsked();
    last_asked_ = watched_;
}

void CardKeeper::close(std::chrono::milliseconds patience) {
    if (card_ == nullptr) return;
    const auto start = Clock::now();
    const uint64_t asked_frames = feed_->framesAsked();
    while (feed_->framesAsked() == asked_frames && Clock::now() - start < patience) {
        constexpr std::chrono::milliseconds kPoll{2};
        std::this_thread::sleep_for(kPoll);
    }
    if (feed_->framesAsked() == asked_frames) card_->abandon();
    card_.reset();
}

}  // namespace sonivex_tool
