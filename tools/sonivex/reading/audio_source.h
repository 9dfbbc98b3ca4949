#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "audio_decoder.h"
#include "audio_spec.h"
#include "decoded_frames.h"
#include "format_converter.h"
#include "input_settings.h"
#include "kept_packets.h"
#include "media_file.h"
#include "source_info.h"
#include "source_report.h"
#include "timeline_repair.h"

namespace sonivex_tool {

/** The next part of a file: a decoded frame, a packet of another stream, or neither at the end. */
struct SourceItem {
    FramePtr frame;    // of the audio stream, in its own spec, which may differ from the frame's before it
    PacketPtr packet;  // of another stream; its timestamps are the container's

    /** Returns true at the end of the file. */
    bool isEnd() const { return frame == nullptr && packet == nullptr; }
};

// Reads a file:
//
//   packets -> other streams: delivered as they are
//           -> audio stream: decode -> wait until enough frames follow -> drop what damage made up
//                            -> silence into gaps, cut overlaps -> frames without a gap
//
// A frame comes out about 0.2 s after it is decoded, so packets of other streams run ahead of it.

/** Reads one audio stream of a file, decoded, and the packets of other streams.
 *
 * Reading goes on after damage as far as the file can be decoded. `timelineReport` and `damageReport` tell
 * what was changed and lost. */
class AudioSource {
  public:
    /** Opens the stream and decodes its first frame.
     * @throw Failure (InputNotReadable, NoAudio, or the exit code of a pending signal), std::bad_alloc */
    explicit AudioSource(const InputSettings& settings);
    AudioSource(const AudioSource&) = delete;
    AudioSource& operator=(const AudioSource&) = delete;

    /** Properties of the stream. */
    const SourceInfo& info() const { return info_; }
    /** Length after the first frame in seconds, or nothing if the file does not state it or only allows an
     * estimate. */
    std::optional<double> knownLength_s() const;

    /** Makes `next` deliver the packets of these streams, the file's first ones included. Call it before the
     * first `next`, and only with InputSettings::keeps_packets.
     * @param streams one entry for each stream of the container; the audio stream's own does not count
     * @throw Failure (InputNotReadable) if the file is a pipe whose audio begins after more packets than
     *  InputSettings::most_kept_bytes, which are lost */
    void deliverPackets(const std::vector<bool>& streams);

    /** Puts silence before the first frame if the stream begins later than the other streams of its file.
     * Call it before the first `next`. It has no effect with TimelinePolicy::Ignore. */
    void insertLeadIn();

    /** Returns the next frame, or the next packet of a stream of `deliverPackets`, in the file's order.
     * @throw Failure with the exit code of a pending signal; std::bad_alloc */
    SourceItem next();

    /** Returns the next frame, converted to the AudioSpec of the first one, or null at the end of the stream.
     * Must not be mixed with `next`.
     * @throw as `next`, and Failure (Internal) when a conversion fails */
    FramePtr read();

    /** Returns true if `seek` works: not in a pipe. */
    bool canSeek() const { return file_->canRestart(); }
    /** Goes on reading at another position: the frames that follow begin there to the sample, as far as the
     * timestamps tell. A container that cannot seek is read again from its beginning up to there. Reports go
     * on counting. Packets of other streams must not be kept.
     * @param seconds position after the stream's first frame; beyond the end nothing follows
     * @return the position of the next frame, which is later than asked in a gap between timestamps; the end
     *  if nothing follows
     * @throw as `next`, and as the constructor if the file cannot be opened again */
    double seek(double seconds);

    /** Makes `next` and `read` end soon, as if the file ended there. Any thread may call it. */
    void abandon();

    /** Returns what following the timestamps has changed so far. */
    const TimelineReport& timelineReport() const { return timeline_report_; }
    /** Damage so far; complete at the end. */
    DamageReport damageReport() const;

    /** The opened file; owned by this object. */
    const AVFormatContext& container() const { return file_->container(); }
    /** The stream that is decoded; owned by this object. */
    const AVStream& stream() const { return *file_->container().streams[stream_index_]; }

  private:
    void chooseStream(const InputSettings& settings);
    void restart(const InputSettings& settings);
    void forgetFrames();
    bool reachesWithSeek(double target_s);
    double dropUntil(double target_s);
    void describe();
    void beginTimeline(int rate_hz);
    void describeEmpty(const std::string& path);
    void readPacket();
    void takeFrames();
    void fill();
    bool dropsFront();
    void placeFront();
    void finish();
    FramePtr silence();
    uint64_t errorsSoFar() const;

    std::string path_;
    InputSettings settings_;
    std::mutex file_mutex_;  // held to replace the file, and to abandon it
    std::atomic<bool> is_abandoned_ = false;
    std::optional<MediaFile> file_;
    TimelinePolicy policy_;
    int stream_index_ = -1;
    SourceInfo info_;
    std::optional<AudioDecoder> decoder_;
    PacketPtr packet_;
    KeptPackets kept_{0};
    std::vector<bool> delivered_;  // streams whose packets are kept
    DecodedFrames frames_;
    std::optional<double> stated_end_s_;
    std::optional<double> latest_s_;          // on the container's clock, after which no frame belongs
    std::optional<double> first_position_s_;  // of the first frame, on the container's clock
    std::optional<TimelineRepair> timeline_;
    std::optional<AudioSpec> decoded_spec_;  // of the last frame that waits or came out
    std::optional<AudioSpec> spec_;          // of the last frame that came out
    std::optional<double> last_error_s_;     // length of the output when something last failed
    int64_t silence_ = 0;                    // samples to put before the first waiting frame
    bool front_is_placed_ = false;           // the first waiting frame needs no further correction
    bool reader_is_at_end_ = false;
    bool is_finished_ = false;
    uint64_t errors_before_frame_ = 0;
    uint64_t invented_frames_ = 0;         // by a decoder in damaged packets
    uint64_t messages_before_packet_ = 0;  // signs of damage before the last packet
    double output_s_ = 0.0;                // length of the frames so far
    TimelineReport timeline_report_;
    DamageReport damage_;
    std::optional<FormatConverter> converter_;
};

}  // namespace sonivex_tool
