#include "card_keeper.h"

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
      last_asked_(now) {}

CardKeeper::~CardKeeper() {
    constexpr std::chrono::milliseconds kPatience{500};
    close(kPatience);
}

std::optional<std::string> CardKeeper::check(Clock::time_point now) {
    if (feed_->framesAsked() != asked_frames_) {
        asked_frames_ = feed_->framesAsked();
        last_asked_ = now;
    }
    if (card_->isGone()) {
        card_.reset();
        return replace("the sound card is gone", now);
    }
    if (now - last_asked_ < kStallLimit) return std::nullopt;
    card_->abandon();
    return replace("the sound card has stalled", now);
}

std::string CardKeeper::replace(const std::string& why, Clock::time_point now) {
    if (failures_ == 0 || now - first_failure_ > kFailureWindow) {
        failures_ = 0;
        first_failure_ = now;
    }
    if (++failures_ > kMostFailures)
        throw Failure(ExitCode::NoSoundCard, why + ", and so did those after it");
    settings_.device.clear();
    try {
        card_ = open_(settings_, feed_);
    } catch (const Failure& failure) {
        throw Failure(failure.exitCode(), why + ", and no other plays: " + failure.what());
    }
    asked_frames_ = feed_->framesAsked();
    last_asked_ = now;
    return why + "; playing goes on with the default one";
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
