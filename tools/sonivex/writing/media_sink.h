#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "audio_encoder.h"
#include "copied_stream.h"
#include "output.h"
#include "output_plan.h"

namespace sonivex_tool {

/** Encodes audio and muxes it into an output, together with the streams of the input that are copied.
 *
 * The constructor and every member throw Failure (OutputFormat, OutputNotWritable, or the failure that the
 * output
 * recorded) and std::bad_alloc. */
class MediaSink {
  public:
    /** Opens the encoder and writes the header, the tags, the chapters and the cover art of the input.
     *
     * @param source the opened input of the plan; it and `output` must outlive this object
     * @param audio_start_s time of the first sample in a film, counted from the start time of `source`, in
     * seconds;
     *     0 for an audio file */
    MediaSink(const OutputPlan& plan, const AVFormatContext& source, double audio_start_s, Output& output);
    ~MediaSink();
    MediaSink(const MediaSink&) = delete;
    MediaSink& operator=(const MediaSink&) = delete;

    /** Encodes a frame, which must have the AudioSpec of the plan's encoder. The samples are copied. */
    void write(const AVFrame& frame);

    /** Muxes a packet of another stream of the input, with its times in that stream's time base. Takes its
     * contents.
     * Packets of streams that are not copied are ignored. The output's order depends only on the packets'
     * times
     * as long as calls come at most a few seconds of the film apart from their audio. */
    void copy(AVPacket& packet);

    /** Encodes the remaining samples, drains the encoder and writes the trailer. The caller then commits the
     * output. */
    void finish();

    /** Returns, for the user, what had to be changed in the copied streams; one line each. */
    std::vector<std::string> notes() const;

  private:
    void addStreams();
    void addRendered(const AVStream& source);
    void openMuxer();
    [[noreturn]] void refuseHeader(int result) const;
    void writePictures();
    void startAudio(double audio_start_s);
    void writeAudio(AVPacket& packet);
    void check(int result) const;

    const OutputPlan plan_;
    const AVFormatContext& source_;
    Output& output_;
    AVFormatContext* muxer_ = nullptr;
    AudioEncoder encoder_;
    AVStream* audio_ = nullptr;
    int64_t origin_us_;                                  // time of the input that is 0 in the output
    std::vector<std::unique_ptr<CopiedStream>> copied_;  // by the input's index; null if not copied
    uint64_t damaged_packets_ = 0;
};

}  // namespace sonivex_tool
