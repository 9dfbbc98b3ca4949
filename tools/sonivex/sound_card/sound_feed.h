#pragma once

#include <array>
#include <atomic>
#include <boost/lockfree/spsc_queue.hpp>
#include <cstddef>
#include <cstdint>

namespace sonivex_tool {

// The queue between the thread that plays and the sound card's own thread:
//
//   playing thread: write() ──▶ ring ──▶ take(): the card's thread
//
// If the ring runs dry, the card gets the last sample fading to silence, and the sound fades in when it comes
// back.
// The card's thread never waits. Only one card takes at a time: while one that was given up is still inside
// take(), its successor gets silence.

/** Channels of everything that is played. */
inline constexpr int kPlayedChannels = 2;

/** Hands samples from the thread that plays to the thread of the sound card. */
class SoundFeed {
  public:
    /** Length of the fades around a gap, in frames. */
    static constexpr int kGapFade_frames = 256;

    /** @param capacity_frames frames that the ring holds, at least 1.
     *  @throw std::bad_alloc */
    explicit SoundFeed(int capacity_frames);

    /** Queues as many frames as there is room for.
     *  @param samples [frames][2], nominally -1 to 1.
     *  @return frames taken. [playing thread] */
    int write(const float* samples, int frames);
    /** Declares that nothing follows, so that an empty ring is the end and no gap. [playing thread] */
    void finish() { is_finished_.store(true, std::memory_order_release); }
    /** Returns the frames that wait in the ring, those that are being copied included. [any, concurrent] */
    int waitingFrames() const;

    /** Returns a ticket for take() and makes all earlier tickets invalid, so that a card that was given up
     *  cannot take samples from its successor. [main thread] */
    uint64_t newTicket() { return ticket_.fetch_add(1, std::memory_order_acq_rel) + 1; }
    /** Fills `samples`, with silence if the ring is empty, the ticket invalid or another card inside.
     *  @param samples [frames][2], overwritten. [the card's thread] real-time safe */
    void take(uint64_t ticket, float* samples, int frames);

    /** Returns how often the ring ran dry in the middle of the sound. [any, concurrent] */
    uint64_t gaps() const { return gaps_.load(std::memory_order_relaxed); }
    /** Returns how many frames cards have asked for, by which a stalled card is known. What a card asks for
     *  while another is inside take() does not count. [any, concurrent] */
    uint64_t framesAsked() const { return asked_frames_.load(std::memory_order_relaxed); }

  private:
    using Frame = std::array<float, kPlayedChannels>;

    void takeFromRing(float* samples, int frames);

    boost::lockfree::spsc_queue<Frame> ring_;
    std::atomic<bool> is_finished_ = false;
    std::atomic<uint64_t> ticket_ = 0;
    std::atomic<uint64_t> gaps_ = 0;
    std::atomic<uint64_t> asked_frames_ = 0;
    // The ring's own counts are for its two ends only.
    std::atomic<uint64_t> written_frames_ = 0;
    std::atomic<uint64_t> taken_frames_ = 0;  // never more than were written
    std::atomic<bool> is_taking_ = false;     // a card is inside take()
    // The rest belongs to the card that has set is_taking_.
    Frame last_{};
    int fade_out_frames_ = 0;  // left of the fade to silence
    int fade_in_frames_ = 0;   // left of the fade from silence
    bool is_dry_ = true;
};

}  // namespace sonivex_tool
