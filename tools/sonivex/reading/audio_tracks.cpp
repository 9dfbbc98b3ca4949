#include "audio_tracks.h"

#include <algorithm>

namespace sonivex_tool {
namespace {

// ISO 639-2 has this code for a language that is not determined.
constexpr const char* kUndetermined = "und";

std::string tagOf(const AVStream& stream, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(stream.metadata, key, nullptr, 0);
    return entry != nullptr ? asOneLine(entry->value) : "";
}

std::string languageOf(const AVStream& stream) {
    std::string language = tagOf(stream, "language");
    return language == kUndetermined ? "" : language;
}

}  // namespace

AudioTracks audioTracksOf(const AVFormatContext& container) {
    AudioTracks found;
    for (unsigned i = 0; i < container.nb_streams; ++i) {
        const AVStream& stream = *container.streams[i];
        if (stream.codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
        found.tracks.push_back(
            {languageOf(stream), tagOf(stream, "title"), (stream.disposition & AV_DISPOSITION_DEFAULT) != 0});
        found.indices.push_back(static_cast<int>(i));
    }
    return found;
}

std::string asOneLine(std::string text) {
    constexpr unsigned char kDelete = 0x7F;
    std::replace_if(
        text.begin(), text.end(), [](unsigned char byte) { return byte < ' ' || byte == kDelete; }, ' ');
    return text;
}

}  // namespace sonivex_tool
