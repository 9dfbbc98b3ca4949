#include "source_info.h"

namespace sonivex_tool {

std::vector<std::string> sentencesOn(const std::string& path, const SourceInfo& info) {
    const std::string file = "\"" + path + "\"";
    std::vector<std::string> lines;
    if (info.audio_streams > 1) {
        const std::string number = std::to_string(info.stream_number);
        lines.push_back("audio stream " + std::to_string(info.stream_number + 1) + " of " +
                        std::to_string(info.audio_streams) + " of " + file + " is read (" +
                        (info.language.empty() ? "" : info.language + ", ") + "--stream " + number + ")");
    }
    if (!info.has_samples) lines.push_back("the audio stream of " + file + " has no samples");
    return lines;
}

}  // namespace sonivex_tool
