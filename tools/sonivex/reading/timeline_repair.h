#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace sonivex_tool {

/** A decoded frame on the container's clock. */
struct Placement {
    std::optional<int64_t> position;  // of its first sample, in samples at the stream's rate; none: unknown
    int64_t length = 0;               // in samples
};

/** Changes to the audio before a frame that put the frame in its place. */
struct Correction {
    int64_t silence = 0;          // samples of silence to insert before the frame
    int64_t cut = 0;              // samples to remove from the frame's beginning
    bool begins_overlap = false;  // the cut is the first of an overlap, which may go on in the next frames
    bool is_jump = false;  // the timestamps jump too far to be followed: nothing is inserted or removed
};

// Keeps audio in step with its timestamps:
//
//   deviation[k] = position[k] - (end of what came out so far + lengths of the frames before k)
//   agreed       = the smallest deviation among the frame and those that follow, if all have the same sign
//   correction   = agreed, if it is a step of more than 5 ms or a drift of more than 40 ms
//
// Timestamps of many containers are rounded to 1 ms, and recorders write some that jitter by more. Only
// deviations on which the next frames agree count, so that neither jitter nor a single wrong timestamp costs
// a sample.

/** Decides where silence goes into decoded audio and what is cut from it. Pure: it sees no samples. */
class TimelineRepair {
  public:
    /** A deviation up to this is rounding or jitter. */
    static constexpr double kJitter_s = 0.005;
    /** A deviation that grows slowly is corrected beyond this: the largest that viewers do not notice (ITU-R
     *  BT.1359 puts detectability at 45 ms for early sound). */
    static constexpr double kLargestDrift_s = 0.040;
    /** A longer gap is taken for an error in the timestamps. */
    static constexpr double kLongestGap_s = 600.0;
    /** A longer step back is taken for a clock that was set anew. */
    static constexpr double kLongestOverlap_s = 10.0;
    /** A step back to this distance from the first timestamp is a clock that starts again, as in files that
     *  were joined byte by byte. */
    static constexpr double kRestart_s = 0.1;

    /** Fewer frames than this, at the end of the stream, are too few to tell a small step from jitter. */
    static constexpr size_t kFewestForStep = 4;

    /** @param rate_hz sample rate of positions and lengths
     *  @param latest_s no frame belongs after this time on the container's clock, by its stated length */
    explicit TimelineRepair(int rate_hz, std::optional<double> latest_s = {})
        : rate_hz_(rate_hz), latest_s_(latest_s) {}

    /** Takes every step back for an error in the timestamps. In a bare stream, where the demuxer only counts
     *  packets, audio cannot overlap. */
    void forbidOverlaps() { overlaps_are_errors_ = true; }

    /** Places a frame; call it once for each frame, in order.
     *  @param frames the frame to place, and frames that will follow it: enough to cover jitter
     *  @return at most one of silence and cut is greater than zero; cut is at most the frame's length */
    Correction place(std::span<const Placement> frames);

    /** Goes on with another sample rate. */
    void setRate(int rate_hz);

    /** Returns the end of the audio so far on the container's clock, in seconds, or nothing before the first
     *  known position. */
    std::optional<double> end_s() const;

  private:
    int64_t samples(double seconds) const { return static_cast<int64_t>(seconds * rate_hz_); }
    int64_t agreedDeviation(std::span<const Placement> frames) const;
    bool isJump(int64_t deviation) const;

    int rate_hz_;
    std::optional<double> latest_s_;
    bool overlaps_are_errors_ = false;
    std::optional<int64_t> first_;     // first known position
    std::optional<int64_t> expected_;  // end of the audio so far
    int64_t last_deviation_ = 0;       // of the last frame that was left where it was
    int64_t rest_to_cut_ = 0;          // of an overlap that is longer than the frames so far
};

}  // namespace sonivex_tool
