#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace sonivex_tool {

/** Where the output goes and how it is encoded. What is not set is chosen from the rest. */
struct OutputSettings {
    std::string path;                               // "-" or "pipe:1": standard output
    std::optional<std::string> format = {};         // libavformat's name of the container
    std::optional<std::string> codec = {};          // libavcodec's name of the audio codec or encoder
    std::optional<int64_t> bit_rate = {};           // of the audio, bit/s of all channels
    std::optional<std::string> sample_format = {};  // libavutil's name, or "s24"
    bool dither = true;                             // when the output has fewer bits than the audio
    bool replace = false;                           // an existing file
    bool keep_other_audio = false;                  // copy the audio streams that are not rendered
    bool audio_only = false;                        // copy neither video, nor subtitles, nor attachments
};

}  // namespace sonivex_tool
