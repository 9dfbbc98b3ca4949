// Cuts a stream of calls into blocks, and into the steps that render them.
//
// A block of L frames is transformed when it is full. It is also transformed, as far as it is filled,
// whenever a call ends in it, so that no output waits for a full block. Such a state of a block is a
// snapshot. It renders the frames that have arrived since the snapshot before:
//
//   calls of 240, L = 256     call 1          call 2            call 3            call 4
//   snapshots                 A 0..240        A 240..256        B 224..256        C 208..256
//                                             B 0..224          C 0..208          D 0..192
//
// Up to four snapshots form a step: those of two calls, or of more calls if they are short. A step begins at
// most two blocks and renders at most the frames of two blocks. The cuts between calls decide the bits of the
// output; the grouping of snapshots into steps does not.
//
// Use: Steps steps(L, fill, frames, calls); while (steps.areLeft()) { const Step step = steps.next(); .. }
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace sonivex {

/** Maximum number of snapshots in a step. */
inline constexpr std::size_t kMaxSnapshots = 4;
/** Maximum number of blocks that begin in a step. */
inline constexpr std::size_t kMaxFreshBlocks = 2;
/** Maximum number of blocks in a step: those that begin in it, and the one begun before. */
inline constexpr std::size_t kMaxBlocks = kMaxFreshBlocks + 1;
/** Maximum number of frames that a step renders, in blocks. */
inline constexpr std::size_t kMaxBlocksOfFrames = kMaxFreshBlocks;

/** A block filled up to frame `to`, of which the frames from .. to - 1 are rendered. */
struct Snapshot {
    std::size_t block;  // 0: the step's first block
    std::size_t from;
    std::size_t to;

    /** Frames that the snapshot renders. [any] real-time safe */
    std::size_t frames() const { return to - from; }
};

/** Snapshots that are rendered together; at least one, in the order of time. */
struct Step {
    std::array<Snapshot, kMaxSnapshots> snapshots{};
    std::size_t count = 0;
    std::size_t block_frames = 0;  // L

    /** Blocks with at least one snapshot in the step. [any] real-time safe */
    std::size_t blocks() const { return snapshots[count - 1].block + 1; }
    /** True if the step's first block begins in it; false if it was begun before. [any] real-time safe */
    bool beginsABlock() const { return snapshots[0].from == 0; }
    /** True if the step's last block is complete. [any] real-time safe */
    bool endsWithABlock() const { return snapshots[count - 1].to == block_frames; }
    /** Blocks that the step completes. [any] real-time safe */
    std::size_t finishedBlocks() const { return blocks() - (endsWithABlock() ? 0 : 1); }
    /** Blocks that begin in the step. [any] real-time safe */
    std::size_t freshBlocks() const { return blocks() - (beginsABlock() ? 0 : 1); }
    /** Frames of the first block that arrived before the step. [any] real-time safe */
    std::size_t firstFill() const { return snapshots[0].from; }
    /** Frames in the last block after the step; 0 if the block is complete. [any] real-time safe */
    std::size_t lastFill() const { return endsWithABlock() ? 0 : snapshots[count - 1].to; }
    /** Frames that the step renders. [any] real-time safe */
    std::size_t frames() const {
        return snapshots[count - 1].block * block_frames + snapshots[count - 1].to - firstFill();
    }
    /** Snapshots that the kernels process together: `count` rounded up to 1, 2 or 4. [any] real-time safe */
    std::size_t lanes() const { return count <= 2 ? count : kMaxSnapshots; }
};

/** Cuts calls of one length into steps. */
class Steps {
  public:
    /** @param fill   frames in the block being filled, below block_frames.
     *  @param frames frames of each call.
     *  [any] real-time safe */
    Steps(std::size_t block_frames, std::size_t fill, std::size_t frames, std::size_t calls)
        : block_frames_(block_frames), fill_(fill), call_frames_(frames), left_(frames * calls) {}

    /** True while frames are left to render. [any] real-time safe */
    bool areLeft() const { return left_ > 0; }

    /** Returns the next step; call it only while areLeft(). [any] real-time safe */
    Step next() {
        Step step;
        step.block_frames = block_frames_;
        std::size_t block = 0;
        std::size_t fresh = 0;
        std::size_t room = kMaxBlocksOfFrames * block_frames_;
        while (left_ > 0 && step.count < kMaxSnapshots) {
            const std::size_t left_of_call = (left_ - 1) % call_frames_ + 1;
            const std::size_t frames = std::min(block_frames_ - fill_, left_of_call);
            if (frames > room || (fill_ == 0 && ++fresh > kMaxFreshBlocks)) break;
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
    std::size_t left_;  // frames left in all calls
};

}  // namespace sonivex
