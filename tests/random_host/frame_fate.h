// Frames that know what became of them.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "vorlin/av_frame.h"

namespace test {

/** Says where a frame is or how it ended. */
enum class Fate {
    kWithHost,           // not handed in yet, or refused
    kInside,             // the filter has it
    kCameOut,            // it was pulled
    kGivenUp,            // the filter destroyed it while it worked
    kRefusedByDialogue,  // given up, because the effect takes no such voice level
    kThrownAway,         // a flush or the end of the filter destroyed it
};

/** Shared by a frame and by the host, which keeps it longer. */
class FrameRecord {
  public:
    Fate fate() const { return fate_.load(); }
    bool isGivenUp() const { return fate() == Fate::kGivenUp || fate() == Fate::kRefusedByDialogue; }
    void set(Fate fate) { fate_.store(fate); }
    /** Notes that the frame is destroyed on the calling thread. */
    void destroyed();

  private:
    std::atomic<Fate> fate_{Fate::kWithHost};
};

/** A frame of samples, with a record of its fate. */
class TrackedFrame final : public Vorlin::AVQFFrame {
  public:
    /** @param samples memory to which `frame` points, if it does not count its references. */
    TrackedFrame(AVFrame* frame, std::shared_ptr<FrameRecord> record, std::vector<std::uint8_t> samples = {})
        : AVQFFrame(frame), record_(std::move(record)), samples_(std::move(samples)) {}
    ~TrackedFrame() override { record_->destroyed(); }

  private:
    const std::shared_ptr<FrameRecord> record_;
    const std::vector<std::uint8_t> samples_;
};

/** A frame of a class that the filter does not know, which holds no samples whatever it describes. */
class StrangeFrame final : public Vorlin::IQFFrame {
  public:
    StrangeFrame(const audioInfo& info, std::shared_ptr<FrameRecord> record)
        : IQFFrame(info), record_(std::move(record)) {}
    ~StrangeFrame() override { record_->destroyed(); }

  private:
    const std::shared_ptr<FrameRecord> record_;
};

/** While it lives, frames that the calling thread destroys inside a filter count as thrown away. */
class ThrowingAway {
  public:
    ThrowingAway();
    ~ThrowingAway();
    ThrowingAway(const ThrowingAway&) = delete;
    ThrowingAway& operator=(const ThrowingAway&) = delete;
};

/** Reads the filter's log while it lives: each frame that a filter gives up must be announced by exactly one
 *  line, on the same thread, before it is destroyed. Only one object may live at a time. It makes the
 *  effects' own log quiet, because the effects write it to standard output. */
class DropLog {
  public:
    DropLog();
    ~DropLog();
    DropLog(const DropLog&) = delete;
    DropLog& operator=(const DropLog&) = delete;

    /** Installs the reader once more, as a player may do while filters log. */
    static void install();

    /** Returns how many lines announced a lost frame. */
    std::uint64_t announced() const;
    /** Returns how many frames were given up. */
    std::uint64_t givenUp() const;
    /** @throws BrokenPromise if a frame was given up without a line of its own. */
    void check() const;
    /** As `check`, and no line announced a frame that was not lost. Call it while no worker runs. */
    void checkAtRest() const;

  private:
    void (*const writer_before_)(const char*, int);
};

}  // namespace test
