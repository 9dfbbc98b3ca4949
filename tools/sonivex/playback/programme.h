#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "audio_source.h"
#include "format_converter.h"

namespace sonivex_tool {

/** A frame of the programme and its place. */
struct ProgrammeFrame {
    FramePtr frame;
    int64_t position = 0;  // in frames at the programme's rate, from the beginning of the file
};

/** The sound of a file as all effects get it: at one rate that every effect processes, as floats without NaN,
 *  in the layout with which the file begins. It remembers the last half second and what is read ahead, so
 *  that an effect that begins later has heard what came before. */
class Programme {
  public:
    /** Opens the file.
     *  @throw as AudioSource does */
    explicit Programme(const InputSettings& settings);

    /** Properties of the stream. */
    const SourceInfo& info() const { return source_.info(); }
    /** Length in seconds, or nothing if the file does not state it or only allows an estimate. */
    std::optional<double> knownLength_s() const { return source_.knownLength_s(); }
    /** The AudioSpec of every frame. */
    const AudioSpec& spec() const { return converter_->target(); }
    /** Damage so far; complete at the end. */
    DamageReport damage() const { return source_.damageReport(); }

    /** Reads on.
     *  @return false at the end
     *  @throw as AudioSource::next does */
    bool readOn();
    /** Returns true if the file has been read to its end. */
    bool isAtEnd() const { return is_at_end_; }
    /** Returns the position after the last frame. */
    int64_t end() const { return end_; }

    /** Returns a line for the user about each change of the file's format since the last call. What follows a
     *  change is converted to the format with which the file began. */
    std::vector<std::string> takeChanges() { return std::exchange(changes_, {}); }

    /** Returns true if `seek` works. */
    bool canSeek() const { return source_.canSeek(); }
    /** Goes to another position and forgets the frames.
     *  @return the position of the next frame
     *  @throw as AudioSource::seek does */
    int64_t seek(double seconds);

    /** Returns the number of the oldest remembered frame. Frames are numbered in the order in which they were
     *  read. */
    uint64_t oldest() const { return oldest_; }
    /** Returns the number of the next frame to be read. */
    uint64_t next() const { return oldest_ + frames_.size(); }
    /** Returns the frame of a number from oldest() to below next(). */
    const ProgrammeFrame& frame(uint64_t number) const { return frames_[number - oldest_]; }
    /** Forgets frames that end before `position` and whose number is below `number`. */
    void forgetBefore(int64_t position, uint64_t number);

    /** Makes readOn() end soon. Any thread may call it. */
    void abandon() { source_.abandon(); }

  private:
    void append(FramePtr frame);
    void noteChange(const AudioSpec& spec);

    AudioSource source_;
    AudioSpec heard_;  // of the last frame of the file
    std::vector<std::string> changes_;
    std::optional<FormatConverter> converter_;
    bool is_at_end_ = false;
    int64_t end_ = 0;
    uint64_t oldest_ = 0;
    std::deque<ProgrammeFrame> frames_;
};

}  // namespace sonivex_tool
