#pragma once

// Hides the differences between the releases of libavcodec with which the project builds (5.1 to 7.1), as
// vorlin/av_compat.h does for the other libraries.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/version.h>
}

#include <cstddef>
#include <span>

namespace sonivex_tool::av {

// codecSampleFormats, codecSampleRatesHz and codecChannelLayouts list what an encoder declares to support.
// A list is empty if the encoder declares no limits. FFmpeg owns the entries.

#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
/** @return a list that `codec` declares. [any, concurrent] */
template <typename Entry>
std::span<const Entry> declaredByCodec(const AVCodec& codec, AVCodecConfig list) {
    const void* entries = nullptr;
    int count = 0;
    if (avcodec_get_supported_config(nullptr, &codec, list, 0, &entries, &count) < 0) return {};
    return {static_cast<const Entry*>(entries), entries == nullptr ? 0 : static_cast<std::size_t>(count)};
}
inline std::span<const AVSampleFormat> codecSampleFormats(const AVCodec& codec) {
    return declaredByCodec<AVSampleFormat>(codec, AV_CODEC_CONFIG_SAMPLE_FORMAT);
}
inline std::span<const int> codecSampleRatesHz(const AVCodec& codec) {
    return declaredByCodec<int>(codec, AV_CODEC_CONFIG_SAMPLE_RATE);
}
inline std::span<const AVChannelLayout> codecChannelLayouts(const AVCodec& codec) {
    return declaredByCodec<AVChannelLayout>(codec, AV_CODEC_CONFIG_CHANNEL_LAYOUT);
}
#else
/** @return the entries before the one for which `is_end` is true; none if there is no list.
 *  [any, concurrent] */
template <typename Entry, typename IsEnd>
std::span<const Entry> entriesBeforeEnd(const Entry* entries, IsEnd is_end) {
    std::size_t count = 0;
    while (entries != nullptr && !is_end(entries[count])) ++count;
    return {entries, count};
}
inline std::span<const AVSampleFormat> codecSampleFormats(const AVCodec& codec) {
    return entriesBeforeEnd(codec.sample_fmts,
                            [](AVSampleFormat format) { return format == AV_SAMPLE_FMT_NONE; });
}
inline std::span<const int> codecSampleRatesHz(const AVCodec& codec) {
    return entriesBeforeEnd(codec.supported_samplerates, [](int rate_hz) { return rate_hz == 0; });
}
inline std::span<const AVChannelLayout> codecChannelLayouts(const AVCodec& codec) {
    return entriesBeforeEnd(codec.ch_layouts,
                            [](const AVChannelLayout& layout) { return layout.nb_channels == 0; });
}
#endif

}  // namespace sonivex_tool::av
