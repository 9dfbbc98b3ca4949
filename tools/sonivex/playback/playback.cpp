#include "playback.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "console.h"
#include "failure.h"

namespace sonivex_tool {
namespace {

constexpr double kFade_s = 0.040;
constexpr double kAhead_s = 0.5;      // computed beyond what is rendered
constexpr double kHistory_s = 0.5;    // remembered for an effect that begins
constexpr double kRounding_s = 0.05;  // by which a container's length may be too short
constexpr int kBlock_frames = 480;
// A path that runs up takes so much of the programme for each block that is rendered, so that the sound goes
// on.
constexpr int64_t kRunUp_frames = 8192;

AudioSpec stereoSpec(int rate_hz) {
    return {.format = AV_SAMPLE_FMT_FLT, .rate_hz = rate_hz, .layout = defaultLayout(2)};
}

int fadeFrames(int rate_hz) {
    return static_cast<int>(kFade_s * rate_hz);
}

float linear(double decibels) {
    return static_cast<float>(std::pow(10.0, decibels / 20.0));
}

}  // namespace

Playback::Playback(const PlaybackSettings& settings, std::shared_ptr<Vorlin::Plugin> plugin)
    : plugin_(std::move(plugin)),
      video_fps_(settings.video_fps),
      programme_(settings.input),
      to_stereo_(stereoSpec(programme_.spec().rate_hz)),
      wants_effect_(settings.hears_effect),
      is_matching_(settings.is_matching),
      volume_db_(settings.volume_db),
      whole_(fadeFrames(rate_hz()), true),
      listening_(fadeFrames(rate_hz()), settings.hears_effect),
      next_(fadeFrames(rate_hz()), false),
      volume_(linear(settings.volume_db)),
      output_peak_(rate_hz()),
      original_block_(2UL * kBlock_frames),
      path_block_(2UL * kBlock_frames),
      next_block_(2UL * kBlock_frames) {
    if (settings.choice.chain.size() > 1) chains_.push_back(settings.choice.chain);
    for (const Effect& effect : allEffects()) {
        if (plugin_->exports(effect.exported_function.c_str())) chains_.push_back({&effect});
    }
    path_ = std::make_unique<EffectPath>(settings.choice, video_fps_, plugin_, programme_);
    if (settings.start_s > 0.0) {
        if (!programme_.canSeek())
            throw Failure(ExitCode::Usage, "--start: \"" + settings.input.path + "\" cannot be sought in");
        const std::optional<double> length_s = programme_.knownLength_s();
        if (length_s && settings.start_s >= *length_s) {
            throw Failure(ExitCode::Usage, "--start: \"" + settings.input.path + "\" is only " +
                                               clockTime(*length_s + kRounding_s) + " long");
        }
        seek_target_s_ = settings.start_s;
        doSeek();
    }
    checkPaths();
    listening_.jump(isEffectHeard());
}

void Playback::note(const std::string& text) {
    events_.push_back({static_cast<double>(position_) / rate_hz(), text});
}

std::vector<PlayEvent> Playback::takeEvents() {
    return std::exchange(events_, {});
}

void Playback::doSeek() {
    position_ = programme_.seek(*std::exchange(seek_target_s_, std::nullopt));
    original_ = StereoQueue(position_);
    next_frame_ = programme_.oldest();
    path_->seek(programme_);
    if (next_path_) {
        // The path that was to come takes over at once, since nothing is heard.
        path_ = std::move(next_path_);
        path_->seek(programme_);
        next_.jump(false);
        is_loss_reported_ = false;
    }
    are_gains_set_ = false;
    whole_.aim(!is_paused_ && !is_quitting_);
    checkPaths();
    listening_.jump(isEffectHeard());
}

// Begins the path of a new choice.
void Playback::beginNext() {
    const EffectChoice choice = *std::exchange(wanted_, std::nullopt);
    try {
        next_path_ = std::make_unique<EffectPath>(choice, video_fps_, plugin_, programme_);
    } catch (const Failure& failure) {
        note("cannot change to " + describe(choice) + ": " + failure.what());
    }
}

// Reports what became of the paths, and turns to the original if the filter is lost.
void Playback::checkPaths() {
    if (next_path_ && !next_.isUp()) {
        const std::string reason = next_path_->lossReason();
        if (!reason.empty() && path_->lossReason().empty()) {
            note("cannot change to " + describe(next_path_->choice()) + ": " + reason);
            next_path_.reset();
        } else if (next_path_->isUpToDate(programme_)) {
            next_.aim(true);
            next_gain_ = is_matching_ ? linear(next_path_->match().processed_gain_db) : 1.0F;
        }
    }
    if (next_path_ && next_.isAtOne()) {
        path_ = std::move(next_path_);
        path_gain_ = next_gain_;
        next_.jump(false);
        is_loss_reported_ = false;
        reported_filled_frames_ = 0;
    }
    if (!path_->lossReason().empty() && !is_loss_reported_) {
        is_loss_reported_ = true;
        note("the original is heard: " + path_->lossReason() + " (r retries)");
    }
    if (path_->lossReason().empty() && path_->filledFrames() > reported_filled_frames_) {
        reported_filled_frames_ = path_->filledFrames();
        note("the filter has dropped " + std::to_string(reported_filled_frames_) + " frames so far");
    }
    listening_.aim(isEffectHeard());
}

// Reads and processes ahead.
void Playback::fill() {
    const auto ahead_frames = static_cast<int64_t>(kAhead_s * rate_hz());
    const auto is_enough = [&] {
        const bool is_lost = !path_->lossReason().empty();
        const int64_t end = is_lost ? original_.end() : std::min(original_.end(), path_->end());
        return end - position_ >= ahead_frames;
    };
    while (!is_enough() && (!programme_.isAtEnd() || next_frame_ < programme_.next())) {
        (void)programme_.readOn();
        for (const std::string& change : programme_.takeChanges()) note(change);
        for (; next_frame_ < programme_.next(); ++next_frame_) {
            const AVFrame& frame = *programme_.frame(next_frame_).frame;
            const FramePtr stereo = to_stereo_.convert(FramePtr(allocated(av_frame_clone(&frame))));
            if (stereo != nullptr) original_.append(*stereo);
        }
        path_->follow(programme_, original_, std::numeric_limits<int64_t>::max());
    }
    path_->follow(programme_, original_, std::numeric_limits<int64_t>::max());
    if (next_path_) next_path_->follow(programme_, original_, kRunUp_frames);
}

int64_t Playback::available() const {
    const int64_t end =
        path_->lossReason().empty() ? std::min(original_.end(), path_->end()) : original_.end();
    const bool is_complete = programme_.isAtEnd();
    return (is_complete ? std::max(original_.end(), path_->end()) : end) - position_;
}

void Playback::forget() {
    const auto history_frames = static_cast<int64_t>(kHistory_s * rate_hz());
    uint64_t number = std::min(next_frame_, path_->lossReason().empty() ? path_->nextFrame() : next_frame_);
    if (next_path_) number = std::min(number, next_path_->nextFrame());
    programme_.forgetBefore(position_ - history_frames, number);
    const int64_t oldest =
        programme_.oldest() < programme_.next() ? programme_.frame(programme_.oldest()).position : position_;
    original_.dropBefore(std::min(oldest, position_));
    path_->dropBefore(position_);
    if (next_path_) next_path_->dropBefore(position_);
}

int Playback::render(float* samples, int frames) {
    int done = 0;
    while (done < frames) {
        float* rest = samples + static_cast<ptrdiff_t>(done) * 2;
        const bool is_silent = whole_.isAtZero();
        if (is_silent && is_quitting_) return done;
        if (seek_target_s_ && is_silent) doSeek();
        if (whole_.isAtZero()) {
            std::fill_n(rest, static_cast<ptrdiff_t>(frames - done) * 2, 0.0F);
            return frames;
        }
        if (wanted_ && !next_path_) beginNext();
        fill();
        checkPaths();
        // A pause takes nothing of the programme once it is silent.
        const int audible = whole_.isUp() ? kBlock_frames : whole_.framesLeft();
        const auto count =
            static_cast<int>(std::min<int64_t>({frames - done, kBlock_frames, audible, available()}));
        if (count <= 0) {
            if (!seek_target_s_) return done;
            doSeek();  // from the end
            continue;
        }
        mix(rest, count);
        done += count;
        forget();
    }
    return done;
}

std::string Playback::guardText() const {
    if (!path_->lossReason().empty()) return "bypassed: " + path_->lossReason();
    if (!video_fps_) return "idle without --fps";
    return "watching at " + std::to_string(std::lround(*video_fps_)) + " fps";
}

PlayStatus Playback::status() {
    PlayStatus status;
    status.position_s = static_cast<double>(position_) / rate_hz();
    status.is_paused = is_paused_;
    status.hears_effect = isEffectHeard();
    status.effect = describe(wanted_ ? *wanted_ : next_path_ ? next_path_->choice() : path_->choice());
    status.is_matching = is_matching_;
    status.reading = path_->readingAt(position_);
    if (!is_matching_) status.reading.original_gain_db = status.reading.processed_gain_db = 0.0;
    status.output_peak_dbfs = output_peak_.peak_dbfs();
    status.volume_db = volume_db_;
    status.cpu_share = path_->cpuShare();
    status.guard = guardText();
    status.clipped_samples = clipped_samples_;
    return status;
}

}  // namespace sonivex_tool
