// Applies the actions of the keys to a Playback.

#include <algorithm>

#include "playback.h"

namespace sonivex_tool {
namespace {

constexpr double kLowestVolume_db = -60.0;
constexpr double kVolumeStep_db = 2.0;
constexpr double kSmallSeek_s = 5.0;
constexpr double kFarSeek_s = 60.0;
constexpr double kVoiceStep = 0.5;

}  // namespace

void Playback::act(PlayAction action) {
    if (is_quitting_) return;  // the last fade is not to be turned round
    const double now_s = seek_target_s_.value_or(static_cast<double>(position_) / rate_hz());
    const EffectChoice current = wanted_ ? *wanted_ : next_path_ ? next_path_->choice() : path_->choice();
    switch (action) {
        case PlayAction::ToggleEffect:
            return toggleEffect();
        case PlayAction::NextEffect:
            return choose(withNextEffect(current, chains_), {});
        case PlayAction::NextType:
            return choose(withNextType(current), "only surround has types");
        case PlayAction::NextMode:
            return choose(withNextMode(current), "only surround of type MegaBass has modes");
        case PlayAction::RaiseVoice:
            return choose(withVoice(current, kVoiceStep), "only dialogue has a voice level");
        case PlayAction::LowerVoice:
            return choose(withVoice(current, -kVoiceStep), "only dialogue has a voice level");
        case PlayAction::Retry:
            return choose(current, {});
        case PlayAction::ToggleMatching:
            is_matching_ = !is_matching_;
            return;
        case PlayAction::Back:
            return seekTo(now_s - kSmallSeek_s);
        case PlayAction::Forward:
            return seekTo(now_s + kSmallSeek_s);
        case PlayAction::FarBack:
            return seekTo(now_s - kFarSeek_s);
        case PlayAction::FarForward:
            return seekTo(now_s + kFarSeek_s);
        case PlayAction::TogglePause:
            is_paused_ = !is_paused_;
            whole_.aim(!is_paused_ && !seek_target_s_);
            return;
        case PlayAction::Louder:
            volume_db_ = std::min(volume_db_ + kVolumeStep_db, 0.0);
            return;
        case PlayAction::Quieter:
            volume_db_ = std::max(volume_db_ - kVolumeStep_db, kLowestVolume_db);
            return;
        case PlayAction::Quit:
            is_quitting_ = true;
            whole_.aim(false);
            return;
    }
}

void Playback::toggleEffect() {
    wants_effect_ = !wants_effect_;
    if (wants_effect_ && !path_->lossReason().empty()) note("the effect is off: " + path_->lossReason());
    listening_.aim(isEffectHeard());
}

void Playback::choose(const std::optional<EffectChoice>& choice, const std::string& refusal) {
    if (choice) {
        wanted_ = choice;
    } else {
        note(refusal);
    }
}

void Playback::seekTo(double seconds) {
    if (!programme_.canSeek()) return note("this input cannot be sought in");
    const double length_s = info().length_seconds.value_or(seconds);
    seek_target_s_ = std::clamp(seconds, 0.0, std::max(length_s, 0.0));
    whole_.aim(false);
}

}  // namespace sonivex_tool
