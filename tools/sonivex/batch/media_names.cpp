#include "media_names.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "av_objects.h"

namespace sonivex_tool {
namespace {

constexpr std::array<std::string_view, 53> kMediaExtensions = {
    "3gp", "aac", "ac3",  "aif", "aifc", "aiff", "amr",  "ape",  "asf", "au",  "avi", "caf",  "dff",  "dsf",
    "dts", "dv",  "eac3", "f4v", "flac", "flv",  "m2a",  "m2ts", "m4a", "m4b", "m4v", "mka",  "mkv",  "mlp",
    "mov", "mp2", "mp3",  "mp4", "mpc",  "mpeg", "mpg",  "mts",  "oga", "ogg", "ogv", "opus", "rf64", "snd",
    "spx", "thd", "tta",  "vob", "w64",  "wav",  "weba", "webm", "wma", "wmv", "wv",
};

std::string lowerCase(std::string text) {
    // Only ASCII letters: an extension is not text in the user's language.
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

}  // namespace

bool looksLikeMedia(const std::string& path) {
    const std::string extension = lowerCase(std::filesystem::path(path).extension().string());
    if (extension.empty()) return false;
    return std::find(kMediaExtensions.begin(), kMediaExtensions.end(),
                     std::string_view(extension).substr(1)) != kMediaExtensions.end();
}

bool isWritableExtension(const std::string& extension) {
    if (extension.empty() || extension.find_first_of("./") != std::string::npos) return false;
    const AVOutputFormat* muxer = av_guess_format(nullptr, ("x." + extension).c_str(), nullptr);
    if (muxer == nullptr || (muxer->flags & (AVFMT_NOFILE | AVFMT_NEEDNUMBER)) != 0) return false;
    // Bare samples carry the name of their codec and store neither the rate nor the channels.
    if (avcodec_get_name(muxer->audio_codec) == "pcm_" + std::string(muxer->name)) return false;
    return muxer->audio_codec != AV_CODEC_ID_NONE && avcodec_find_encoder(muxer->audio_codec) != nullptr;
}

std::string extensionOfFormat(const std::string& format) {
    const AVOutputFormat* muxer = av_guess_format(format.c_str(), nullptr, nullptr);
    if (muxer == nullptr || muxer->extensions == nullptr) return {};
    const std::string extensions = muxer->extensions;  // separated by commas
    return extensions.substr(0, extensions.find(','));
}

}  // namespace sonivex_tool
