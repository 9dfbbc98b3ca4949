// How calls meet blocks: the steps in which a stream of calls is rendered.
//
// A block of L frames is transformed as far as it is filled whenever a call ends in it, so that no output
// waits for the block to be complete. Such a state of a block is a snapshot; the frames that have come since
// the one before are what it renders:
//
//   calls of 240, L = 256     call 1          call 2            call 3            call 4
//   snapshots                 A 0..240        A 240..256        B 224..256        C 208..256
//                                             B 0..224          C 0..208          D 0..192
//
// Up to four snapshots form a step: those of two calls, or of more if they are short. It may begin two blocks
// and render as many frames as two blocks have, not more. Where the cuts between calls lie decides the bits
// of the output; how snapshots are gathered in steps does not.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace sonivex {

inline constexpr std::size_t kMostSnapshots = 4;
inline constexpr std::size_t kMostFreshBlocks = 2;
/** Fresh ones, and the one that was begun before. */
inline constexpr std::size_t kMostBlocks = kMostFreshBlocks + 1;
/** The frames that are rendered, in blocks. */
inline constexpr std::size_t kMostBlocksOfFrames = kMostFreshBlocks;

/** Renders frames from..to of a block that is filled up to `to`. */
struct Snapshot {
    std::size_t block;  // 0: the step's first one
    std::size_t from;
    std::size_t to;

    std::size_t frames() const { return to - from; }
};

struct Step {
    std::array<Snapshot, kMostSnapshots> snapshots{};
    std::size_t count = 0;
    std::size_t block_frames = 0;  // L

    std::size_t blocks() const { return snapshots[count - 1].block + 1; }
    /** Whether its first block begins in it, and is not one that was begun before. */
    bool beginsABlock() const { return snapshots[0].from == 0; }
    bool endsWithABlock() const { return snapshots[count - 1].to == block_frames; }
    std::size_t finishedBlocks() const { return blocks() - (endsWithABlock() ? 0 : 1); }
    std::size_t freshBlocks() const { return blocks() - (beginsABlock() ? 0 : 1); }
    /** Frames of its first block that came before. */
    std::size_t firstFill() const { return snapshots[0].from; }
    /** Frames of its last block at its end; 0 if that is finished. */
    std::size_t lastFill() const { return endsWithABlock() ? 0 : snapshots[count - 1].to; }
    std::size_t frames() const {
        return snapshots[count - 1].block * block_frames + snapshots[count - 1].to - firstFill();
    }
    /** As many snapshots as the kernels work on together: 1, 2 or 4. */
    std::size_t lanes() const { return count <= 2 ? count : kMostSnapshots; }
};

/** Cuts calls of one length into steps. */
class Steps {
  public:
    /** @param fill  frames of the block being filled, below block_frames.
     *  @param frames of each call. */
    Steps(std::size_t block_frames, std::size_t fill, std::size_t frames, std::size_t calls)
        : block_frames_(block_frames), fill_(fill), call_frames_(frames), left_(frames * calls) {}

    bool areLeft() const { return left_ > 0; }

    Step next() {
        Step step;
        step.block_frames = block_frames_;
        std::size_t block = 0;
        std::size_t fresh = 0;
        std::size_t room = kMostBlocksOfFrames * block_frames_;
        while (left_ > 0 && step.count < kMostSnapshots) {
            const std::size_t left_of_call = (left_ - 1) % call_frames_ + 1;
            const std::size_t frames = std::min(block_frames_ - fill_, left_of_call);
            if (frames > room || (fill_ == 0 && ++fresh > kMostFreshBlocks)) break;
            room -= frames;
            step.snapshots[step.count++] = {block, fill_, fill_ + frames};
            left_ -= frames;
            fill_ += frames;
            if (fill_ == block_frames_) {
                fill_ = 0;
                ++block;
            }
        }
        return step;
    }

  private:
    std::size_t block_frames_;
    std::size_t fill_;
    std::size_t call_frames_;
    std::size_t left_;  // frames of all calls that are left
};

}  // namespace sonivex
