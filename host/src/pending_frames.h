#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "span.h"
#include "vorlin/frame.h"
#include "vorlin/owned_av_frame.h"
#include "vorlin/player.h"

namespace Vorlin {

/** Frames of the stream whose sound is inside the filter. They get the filter's samples as these come out, in
 *  whatever pieces, and then go to the output: the same objects, with their own times and other properties.
 *
 *  A frame goes out in pieces if the format of its samples changes inside, or if samples in its middle are
 *  lost. A piece is a new frame with the properties of the whole, and with its own time and duration. */
class PendingFrames {
  public:
    explicit PendingFrames(Player::Output output) : mOutput(std::move(output)) {}

    /** Adds the next frame of the stream.
     *  @param samples   the AVFrame inside `frame`, which keeps its samples until the frame goes out.
     *  @param begin     where it begins in the stream; not before the end of the frame before.
     *  @param time_base of its time; {0, 1} if unknown. */
    void add(std::unique_ptr<IQFFrame> frame, AVFrame* samples, int64_t begin, AVRational time_base);

    /** Supplies the samples of `span`. Samples that no waiting frame needs are ignored. Samples before it
     *  that were not supplied are lost: nothing takes their place.
     *  @param source the filter's answer.
     *  @param offset where the samples begin in `source`, in frames. */
    void supply(Span span, const AVFrame& source, int offset);

    /** Supplies everything before `end` that is still missing as it was pushed, except what is lost. */
    void supplyUntouched(int64_t end);

    /** Notes that nothing comes for `span`. */
    void markLost(Span span);

    /** Destroys every frame. */
    void clear();

    bool isEmpty() const { return mFrames.empty(); }
    /** @return the end of the last frame; 0 if there is none. */
    int64_t end() const;

    /** @return 0, or AVERROR(ENOMEM) if samples were lost since the last call because memory ran out. */
    int takeError();

  private:
    struct Pending {
        std::unique_ptr<IQFFrame> frame;
        AVFrame* samples;
        Span span;
        AVRational time_base;
        int done = 0;  // frames that were supplied or lost
    };

    bool append(Pending& frame, const AVFrame& source, int offset, int frames);
    void finishPiece(Pending& frame);
    void handOutFinished(int64_t begin);
    void supplyOwn(int64_t begin, int64_t end);

    const Player::Output mOutput;
    std::deque<Pending> mFrames;  // oldest first
    std::deque<Span> mLost;       // in the order of the stream
    OwnedAVFrame mPiece;          // new samples of the oldest frame
    int mPieceBegin = 0;          // in the frame
    int mPieceFrames = 0;         // so far
    int mError = 0;
};

}  // namespace Vorlin
