#pragma once

#include <memory>

#include "vorlin/av_frame.h"

namespace Vorlin {

/** A tiny frame of silence with 3 channels, which every filter passes on, in order: when it comes out, every
 *  frame pushed before it has come out or been given up. It is known again by its class, never by its
 *  address, which another frame may get after it. */
class FenceFrame final : public AVQFFrame {
  public:
    /** A fence of the stream's sample format and rate, as far as they are valid.
     *  @param number what `number` answers. @return null when memory runs out. */
    static std::unique_ptr<FenceFrame> make(const audioInfo& stream, uint64_t number);

    uint64_t number() const { return mNumber; }

  private:
    FenceFrame(AVFrame* frame, uint64_t number) : AVQFFrame(frame), mNumber(number) {}

    uint64_t mNumber;
};

}  // namespace Vorlin
