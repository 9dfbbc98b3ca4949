#pragma once

namespace sonivex_tool {

/** A gain that moves between 0 and 1 as a raised cosine, g = (1 - cos(pi * phase)) / 2, and may turn round
 *  midway. Two sounds that are faded by g and 1 - g keep the level of what they share. */
class Fade {
  public:
    /** @param length_frames of a whole fade, at least 1
     *  @param is_up whether it stands at 1 or at 0 */
    Fade(int length_frames, bool is_up)
        : length_(length_frames), phase_(is_up ? length_frames : 0), is_up_(is_up) {}

    /** Sets where the gain moves to, from where it is. */
    void aim(bool up) { is_up_ = up; }
    /** Sets the gain at once. */
    void jump(bool up) {
        is_up_ = up;
        phase_ = up ? length_ : 0;
    }
    /** Returns the gain of the next frame. */
    float next();

    /** Returns where the gain moves to, or stands. */
    bool isUp() const { return is_up_; }
    /** Returns how many frames the gain still moves. */
    int framesLeft() const { return is_up_ ? length_ - phase_ : phase_; }
    /** Returns true if the gain stands at 0. */
    bool isAtZero() const { return phase_ == 0 && !is_up_; }
    /** Returns true if the gain stands at 1. */
    bool isAtOne() const { return phase_ == length_ && is_up_; }

  private:
    int length_;
    int phase_;  // 0 to length_
    bool is_up_;
};

}  // namespace sonivex_tool
