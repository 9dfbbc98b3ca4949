// Frames as a kind, a careless and a hostile player push them.
#pragma once

#include <cstdint>
#include <memory>

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/samplefmt.h>
}

#include "random_host/byte_source.h"
#include "random_host/frame_fate.h"

namespace test {

/** The audio of a stream. */
struct Sound {
    enum class Order { kDefault, kMask, kUnspecified, kCustom };

    AVSampleFormat format = AV_SAMPLE_FMT_FLTP;
    int channels = 2;
    int rate_hz = 48000;
    Order order = Order::kDefault;
    std::uint64_t mask = 0;  // of Order::kMask; has `channels` bits
};

/** Returns a stream that some effect processes in most cases. */
Sound randomSound(ByteSource& bytes);

struct AVBufferDeleter {
    void operator()(AVBufferRef* buffer) const { av_buffer_unref(&buffer); }
};

/** Keeps a frame's description for its host after the push. */
struct FrameNote {
    enum class Kind {
        kNull,            // no frame at all
        kWithoutSamples,  // no AVFrame inside
        kWithSamples,
    };

    Kind kind = Kind::kNull;
    bool is_honest = false;         // it holds what it describes
    bool has_common_layout = true;  // libavfilter converts it to the default layout
    const Vorlin::IQFFrame* object = nullptr;
    Vorlin::IQFFrame::audioInfo info;
    std::shared_ptr<FrameRecord> record;  // null for no frame

    // Of the AVFrame.
    int format = -1;
    int channels = 0;
    int rate_hz = 0;
    int frames = 0;
    std::int64_t pts = 0;
    void* opaque = nullptr;
    int metadata = 0;   // entries
    int side_data = 0;  // entries
    const std::uint8_t* first_plane = nullptr;

    // A second reference to the first buffer, whose bytes the filter must not change; null in most frames.
    std::unique_ptr<AVBufferRef, AVBufferDeleter> shared;
    std::uint32_t shared_sum = 0;
};

struct RandomFrame {
    std::unique_ptr<Vorlin::IQFFrame> frame;
    FrameNote note;
};

/** Makes a frame of `sound` that holds what it describes, unless the sound is impossible.
 *  @param longest_frames of the frame's length. */
RandomFrame makeHonestFrame(const Sound& sound, int longest_frames, ByteSource& bytes);

/** Makes a frame that a player should not push: null, without samples, or with a description that is not that
 *  of its samples. */
RandomFrame makeOddFrame(const Sound& sound, ByteSource& bytes);

/** Returns a checksum of the bytes of a buffer. */
std::uint32_t sumOf(const AVBufferRef& buffer);

}  // namespace test
