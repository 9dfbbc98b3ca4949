#pragma once

#include <memory>

#include "vorlin/av_frame.h"

namespace Vorlin {

/** A frame of silence with 3 channels and one sample in each. Every filter passes it on, in order: when it
 *  comes out, every frame pushed before it has come out or been given up. The player recognises it by its
 *  class, never by its address, because another frame may get the same address later. */
class FenceFrame final : public AVQFFrame {
  public:
    /** Makes a fence with the stream's sample format and sample rate, as far as they are valid.
     *  @param number the result of `number`.
     *  @return null if memory runs out. */
    static std::unique_ptr<FenceFrame> make(const audioInfo& stream, uint64_t number);

    /** @return the number with which the fence was made. */
    uint64_t number() const { return mNumber; }

  private:
    FenceFrame(AVFrame* frame, uint64_t number) : AVQFFrame(frame), mNumber(number) {}

    uint64_t mNumber;
};

}  // namespace Vorlin
