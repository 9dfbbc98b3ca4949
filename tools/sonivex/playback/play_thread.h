#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "play_script.h"
#include "playback.h"
#include "sound_feed.h"

namespace sonivex_tool {

/** Plays on a thread of its own, from a Playback into a SoundFeed. One thread calls every function. */
class PlayThread {
  public:
    /** Starts playing.
     *  @param playback belongs to this object's thread until the end, but for `abandon`
     *  @param script keys that are pressed by themselves */
    PlayThread(Playback& playback, std::shared_ptr<SoundFeed> feed, std::vector<ScriptedKey> script);
    /** Stops at once. */
    ~PlayThread();
    PlayThread(const PlayThread&) = delete;
    PlayThread& operator=(const PlayThread&) = delete;

    /** Does what a key does. Quit ends after a short fade. */
    void act(PlayAction action);
    /** Stops at once, whatever waits in the feed. The Playback is free then. */
    void stop();

    /** Returns true if everything has gone to the card, or playing has failed. */
    bool hasEnded() const { return has_ended_; }
    /** Throws what ended the thread, if something did. */
    void rethrow() const;

    /** Returns the newest state. */
    PlayStatus status();
    /** Returns what has happened since the last call. */
    std::vector<PlayEvent> takeEvents();

  private:
    void run();
    void obey(int64_t rendered_frames);
    int untilNextKey(int64_t rendered_frames) const;
    bool send(const float* samples, int frames);
    void publish();

    Playback& playback_;
    const std::shared_ptr<SoundFeed> feed_;
    const std::vector<ScriptedKey> script_;
    size_t next_key_ = 0;
    std::atomic<bool> stops_ = false;
    std::atomic<bool> has_ended_ = false;
    std::mutex mutex_;  // of the members below it, up to the thread
    std::vector<PlayAction> actions_;
    PlayStatus status_;
    std::vector<PlayEvent> events_;
    std::exception_ptr error_;  // set before has_ended_
    std::thread thread_;
};

}  // namespace sonivex_tool
