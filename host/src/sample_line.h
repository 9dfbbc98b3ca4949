#pragma once

#include <cstdint>
#include <memory>

#include "vorlin/frame.h"
#include "vorlin/owned_av_frame.h"

struct AVAudioFifo;

namespace Vorlin {

/** @return true if `frame` holds audio that can be copied: a known sample format, samples in every plane, and
 *  the format, channels and rate of its description. */
bool holdsAudio(const AVFrame* frame, const IQFFrame::audioInfo& info);

/** Makes a frame with room for `frames`, in the format, the layout and at the rate of `like`, which are all
 *  that it takes over.
 *  @return null if memory runs out. */
OwnedAVFrame makeFrameLike(const AVFrame& like, int frames);

/** The waiting line of samples before the filter: frames of any length go in, and frames of the length that
 *  the filter shall get come out. All frames between two calls of `clear` have one format. */
class SampleLine {
  public:
    SampleLine();
    ~SampleLine();

    /** @return waiting frames. */
    int size() const;
    /** Appends a copy of the samples of `frame`. @return 0 or a negative AVERROR, with nothing appended.
     *  @throws std::bad_alloc if the line cannot grow; then it is good for nothing but `clear`. */
    int append(const AVFrame& frame);
    /** Appends silence in the format of the frame before.
     *  @return 0 or a negative AVERROR, with a part of the silence appended. */
    int appendSilence(int64_t frames);
    /** Makes a frame of silence in that format, which is not in the line. @return null if memory runs out. */
    OwnedAVFrame makeSilence(int frames) const;
    /** Takes the oldest `frames`, which must be waiting, as a frame without a time.
     *  @return null if memory runs out; they are then lost. */
    OwnedAVFrame take(int frames);
    /** Removes everything and forgets the format. */
    void clear();

  private:
    struct FifoDeleter {
        void operator()(AVAudioFifo* fifo) const;
    };

    OwnedAVFrame mLike;  // an empty frame with the format, the layout and the rate
    std::unique_ptr<AVAudioFifo, FifoDeleter> mFifo;
};

}  // namespace Vorlin
