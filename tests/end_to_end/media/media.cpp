#include "end_to_end/media/media.h"

#include <array>
#include <cstring>
#include <stdexcept>

#include "support/processes/process.h"

namespace test {
namespace {

std::string outputOf(const std::vector<std::string>& command) {
    const ProcessResult result = runProcess(command);
    if (result.exit_code != 0) throw std::runtime_error(command.front() + " failed: " + result.err);
    return result.out;
}

}  // namespace

void ffmpeg(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"ffmpeg", "-nostdin", "-v", "error", "-y"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    outputOf(command);
}

nlohmann::json probe(const std::string& path) {
    return nlohmann::json::parse(
        outputOf({"ffprobe", "-v", "error", "-of", "json", "-show_streams", "-show_format", path}));
}

std::vector<float> decode(const std::string& path) {
    const std::string bytes =
        outputOf({"ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", "0:a:0", "-f", "f32le", "-"});
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

void makeQuietSpeech(const std::string& path, int channels,
                     const std::vector<std::string>& output_arguments) {
    constexpr std::array<const char*, 8> kAnnouncements = {"Front_Left",  "Front_Right", "Front_Center",
                                                           "Rear_Center", "Rear_Left",   "Rear_Right",
                                                           "Side_Left",   "Side_Right"};
    const std::string layout = channels == 1   ? "mono"
                               : channels == 2 ? "stereo"
                               : channels == 3 ? "2.1"
                               : channels == 6 ? "5.1"
                                               : "7.1";
    std::vector<std::string> arguments;
    for (int c = 0; c < channels; ++c) {
        arguments.insert(arguments.end(), {"-i", std::string(SONIVEX_SPEECH_FOLDER) + "/" +
                                                     kAnnouncements.at(static_cast<size_t>(c)) + ".wav"});
    }
    const std::string merge = channels == 1 ? "" : "amerge=inputs=" + std::to_string(channels) + ",";
    arguments.insert(arguments.end(),
                     {"-filter_complex", merge + "aformat=channel_layouts=" + layout + ",volume=-26dB"});
    arguments.insert(arguments.end(), output_arguments.begin(), output_arguments.end());
    arguments.push_back(path);
    ffmpeg(arguments);
}

}  // namespace test
