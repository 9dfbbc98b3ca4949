#pragma once

#include <cstdint>

#include "audio_source.h"
#include "encoder_plan.h"
#include "output_file.h"
#include "reframer.h"

namespace sonivex_tool {

/** Encodes frames into a file. */
class AudioSink {
  public:
    /** Open the encoder and write the file's header, with the tags of `source`. `file` must outlive this
     * object.
     *  @throw Failure (OutputFormat, or what OutputFile raises), here and below */
    AudioSink(const EncoderPlan& plan, const AudioSource& source, OutputFile& file);
    ~AudioSink();
    AudioSink(const AudioSink&) = delete;
    AudioSink& operator=(const AudioSink&) = delete;

    /** Encode a frame of the plan's spec. */
    void write(const AVFrame& frame);

    /** Encode what is left and end the file; it still has to be committed. */
    void finish();

  private:
    void openEncoder();
    void openMuxer(const AudioSource& source);
    void encode(AVFrame* frame);
    void check(int result) const;

    EncoderPlan plan_;
    OutputFile& file_;
    AVFormatContext* muxer_ = nullptr;
    AVStream* stream_ = nullptr;
    CodecContextPtr encoder_;
    PacketPtr packet_;
    Reframer pending_;
    int64_t position_ = 0;  // frames given to the encoder
};

}  // namespace sonivex_tool
