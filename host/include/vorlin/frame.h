#pragma once

#include <cstdint>

#include "vorlin/api.h"

namespace Vorlin {

/** A frame of a stream as the player passes it on: a description and, in a derived class, the samples. */
class VORLIN_API IQFFrame {
  public:
    /** Describes the audio that the frame holds. A "frame" of audio below is one instant of all channels. */
    struct audioInfo {
        int format = -1;              // AVSampleFormat; -1 = unknown
        int channels = 0;             // samples per frame
        int sample_rate = 0;          // Hz
        int nb_samples = 0;           // frames
        uint64_t channel_layout = 0;  // native channel mask; 0 = unspecified or custom order
    };

    /** Makes a frame that describes no audio. [any] real-time safe */
    IQFFrame() = default;
    IQFFrame(const IQFFrame&) = delete;
    IQFFrame& operator=(const IQFFrame&) = delete;
    /** [any] not real-time safe: derived classes free memory */
    virtual ~IQFFrame();

    /** @return the description, to read and to change. Code that changes the samples must update it.
     *  [any] real-time safe */
    virtual audioInfo& getInfo() { return mInfo; }

  protected:
    explicit IQFFrame(const audioInfo& info) : mInfo(info) {}

  private:
    audioInfo mInfo;
};

}  // namespace Vorlin
