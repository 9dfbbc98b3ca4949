#pragma once

// Hides the differences between the releases of libavformat with which the project builds (5.1 to 7.1), as
// av_compat.h does for the other libraries.

extern "C" {
#include <libavformat/avformat.h>
#include <libavformat/version.h>
}

#include <cstring>

namespace Vorlin::av {

/** Whether the muxers of Matroska and WebM write the rotation of a video. They do not in 5.1. */
constexpr bool kMatroskaHoldsRotation = LIBAVFORMAT_VERSION_MAJOR >= 61;

/** Whether the muxers of Matroska and WebM add the delay that they state for Opus to the times of its blocks.
 *  5.1 leaves that to its caller, 7.1 does it; no release between them was tried. */
constexpr bool kMatroskaDelaysBlocks = LIBAVFORMAT_VERSION_MAJOR >= 61;

/** Returns true if a stream has a matrix by which a player turns or mirrors it.
 *  [any] */
inline bool hasDisplayMatrix(const AVStream& stream) {
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(60, 15, 100)
    return av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr) != nullptr;
#else
    return av_packet_side_data_get(stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data,
                                   AV_PKT_DATA_DISPLAYMATRIX) != nullptr;
#endif
}

/** Copies the side data of a stream, such as its rotation. Call it after avcodec_parameters_copy, which
 *  copies them itself since 6.1.
 *  @return 0 or a negative AVERROR.
 *  [any] allocates */
inline int copyStreamSideData(AVStream* output, const AVStream* source) {
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(60, 15, 100)
    for (int i = 0; i < source->nb_side_data; ++i) {
        const AVPacketSideData& data = source->side_data[i];
        uint8_t* copy = av_stream_new_side_data(output, data.type, data.size);
        if (copy == nullptr) return AVERROR(ENOMEM);
        std::memcpy(copy, data.data, data.size);
    }
#else
    (void)output;
    (void)source;
#endif
    return 0;
}

}  // namespace Vorlin::av
