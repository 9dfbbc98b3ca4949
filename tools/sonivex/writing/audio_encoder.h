#pragma once

#include <cstdint>
#include <functional>

#include "encoder_plan.h"
#include "reframer.h"

namespace sonivex_tool {

/** Encodes the audio of an output.
 *
 * The constructor and the members throw Failure (OutputFormat, OutputNotWritable) and std::bad_alloc. */
class AudioEncoder {
  public:
    /** Receives each encoded packet, with timestamps in units of 1/rate seconds. */
    using PacketReceiver = std::function<void(AVPacket&)>;

    /** Opens the encoder. @param global_header the muxer stores the codec's header in its own */
    AudioEncoder(const EncoderPlan& plan, bool global_header, PacketReceiver receive);

    /** The opened encoder; owned by this object. */
    const AVCodecContext& context() const { return *encoder_; }

    /** Sets the position of the first sample, in samples. Call it before the first `write`.
     * @param silence samples per channel of silence to encode before the first frame
     * @param skip samples per channel to leave out at the beginning */
    void start(int64_t position, int silence, int64_t skip);

    /** Encodes a frame, which must have the plan's spec. The samples are copied. */
    void write(const AVFrame& frame);

    /** Encodes the remaining samples and drains the encoder. */
    void finish();

  private:
    void encode(AVFrame* frame);
    static void check(int result);

    EncoderPlan plan_;
    PacketReceiver receive_;
    CodecContextPtr encoder_;
    PacketPtr packet_;
    Reframer pending_;
    int64_t position_ = 0;  // of the next sample to encode
    int64_t skip_ = 0;      // samples still to leave out
};

}  // namespace sonivex_tool
