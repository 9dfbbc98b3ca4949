#include "play_thread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "thread_start.h"

namespace sonivex_tool {
namespace {

constexpr int kBlock_frames = 480;
// The ring has no signal for the thread that fills it, because the card's thread must not make system calls.
constexpr std::chrono::milliseconds kPoll{3};

}  // namespace

PlayThread::PlayThread(Playback& playback, std::shared_ptr<SoundFeed> feed, std::vector<ScriptedKey> script)
    : playback_(playback), feed_(std::move(feed)), script_(std::move(script)) {
    publish();
    thread_ = startThread([this] {
        try {
            run();
        } catch (...) {
            error_ = std::current_exception();
        }
        feed_->finish();
        has_ended_ = true;
    });
}

PlayThread::~PlayThread() {
    stop();
}

void PlayThread::stop() {
    if (!thread_.joinable()) return;
    stops_ = true;
    playback_.abandon();
    thread_.join();
}

void PlayThread::rethrow() const {
    if (has_ended_ && error_ != nullptr) std::rethrow_exception(error_);
}

void PlayThread::act(PlayAction action) {
    const std::lock_guard lock(mutex_);
    actions_.push_back(action);
}

PlayStatus PlayThread::status() {
    const std::lock_guard lock(mutex_);
    return status_;
}

std::vector<PlayEvent> PlayThread::takeEvents() {
    const std::lock_guard lock(mutex_);
    return std::exchange(events_, {});
}

void PlayThread::publish() {
    PlayStatus status = playback_.status();
    std::vector<PlayEvent> events = playback_.takeEvents();
    const std::lock_guard lock(mutex_);
    status_ = std::move(status);
    events_.insert(events_.end(), std::make_move_iterator(events.begin()),
                   std::make_move_iterator(events.end()));
}

// Presses the keys that are due.
void PlayThread::obey(int64_t rendered_frames) {
    std::vector<PlayAction> actions;
    {
        const std::lock_guard lock(mutex_);
        actions.swap(actions_);
    }
    for (; next_key_ < script_.size() && untilNextKey(rendered_frames) == 0; ++next_key_)
        actions.push_back(script_[next_key_].action);
    for (const PlayAction action : actions) playback_.act(action);
}

// Returns the frames until the script's next key, or a whole block.
int PlayThread::untilNextKey(int64_t rendered_frames) const {
    if (next_key_ == script_.size()) return kBlock_frames;
    const double frame = std::round(script_[next_key_].time_s * playback_.rate_hz());
    return static_cast<int>(
        std::clamp(frame - static_cast<double>(rendered_frames), 0.0, static_cast<double>(kBlock_frames)));
}

// Waits until the feed has taken the samples. Returns false if the thread is to stop.
bool PlayThread::send(const float* samples, int frames) {
    int sent = 0;
    while (!stops_) {
        sent += feed_->write(samples + static_cast<ptrdiff_t>(sent) * kPlayedChannels, frames - sent);
        if (sent == frames) return true;
        std::this_thread::sleep_for(kPoll);
    }
    return false;
}

void PlayThread::run() {
    std::vector<float> block(static_cast<size_t>(kBlock_frames) * kPlayedChannels);
    int64_t rendered_frames = 0;
    while (!stops_) {
        obey(rendered_frames);
        const int wanted = untilNextKey(rendered_frames);
        const int frames = playback_.render(block.data(), wanted);
        rendered_frames += frames;
        publish();
        if (!send(block.data(), frames)) return;
        if (frames < wanted) break;
    }
    feed_->finish();
    while (!stops_ && feed_->waitingFrames() > 0) std::this_thread::sleep_for(kPoll);
}

}  // namespace sonivex_tool
