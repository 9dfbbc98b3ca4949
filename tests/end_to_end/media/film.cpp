#include "end_to_end/media/film.h"

#include <cstring>
#include <stdexcept>

#include "end_to_end/media/media.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace test {
namespace {

constexpr int kRateHz = 48000;
constexpr int kSeconds = 3;
constexpr int kLongestLag = 26'000;        // samples
constexpr size_t kCompared = 16'000;       // samples
constexpr size_t kFirstCompared = 30'000;  // samples of the speech that lie before those compared

void append(std::vector<std::string>& to, const std::vector<std::string>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

std::string outputOf(const std::vector<std::string>& command) {
    const ProcessResult result = runProcess(command);
    if (result.exit_code != 0) throw std::runtime_error(command.front() + " failed: " + result.err);
    return result.out;
}

// The left channel at 48 kHz.
std::vector<float> leftChannel(const std::string& path, const std::string& audio) {
    const std::string bytes = outputOf({"ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", "0:" + audio,
                                        "-af", "pan=mono|c0=c0,aresample=48000", "-f", "f32le", "-"});
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

double firstFrameTime(const std::string& path, const std::string& stream) {
    const auto json = nlohmann::json::parse(
        outputOf({"ffprobe", "-v", "error", "-of", "json", "-select_streams", stream, "-show_entries",
                  "frame=best_effort_timestamp_time", "-read_intervals", "%+2.5", path}));
    return std::stod(json["frames"][0]["best_effort_timestamp_time"].get<std::string>());
}

// Returns the lag at which `sound` correlates best with `speech`.
int lagOf(const std::vector<float>& sound, const std::vector<float>& speech) {
    int best = 0;
    double highest = 0.0;
    for (int lag = -kLongestLag; lag <= kLongestLag; ++lag) {
        double sum = 0.0;
        const size_t first = kFirstCompared - kLongestLag + static_cast<size_t>(lag + kLongestLag);
        for (size_t i = 0; i < kCompared; ++i)
            sum += static_cast<double>(speech[kFirstCompared + i]) * sound[first + i];
        if (sum > highest) {
            highest = sum;
            best = lag;
        }
    }
    return best;
}

}  // namespace

void makeFilmSpeech(const std::string& path, int rate_hz) {
    const std::string folder = SONIVEX_SPEECH_FOLDER;
    ffmpeg({"-i", folder + "/Front_Left.wav", "-i", folder + "/Front_Right.wav", "-filter_complex",
            "amerge=inputs=2,aloop=loop=9:size=60000,volume=-26dB,aresample=" + std::to_string(rate_hz) +
                ",atrim=end_sample=" + std::to_string(kSeconds * rate_hz),
            "-c:a", "pcm_s16le", path});
}

void makeFilm(const std::string& path, const FilmOptions& options) {
    const TemporaryFolder folder;
    makeFilmSpeech(folder.file("speech.wav"), options.rate_hz);
    std::vector<std::string> arguments = {
        "-f",         "lavfi",
        "-i",         "testsrc=duration=" + std::to_string(kSeconds) + ":size=128x96:rate=25",
        "-itsoffset", options.audio_offset_s,
        "-i",         folder.file("speech.wav"),
        "-map",       "0:v",
        "-map",       "1:a"};
    append(arguments, options.video_codec);
    append(arguments, options.audio_codec);
    arguments.push_back(path);
    ffmpeg(arguments);
}

void makeRichFilm(const std::string& folder, const std::string& path) {
    const auto part = [&](const std::string& name) { return folder + "/" + name; };
    makeFilmSpeech(part("speech.wav"));
    writeFile(part("words.srt"),
              "1\n00:00:00,500 --> 00:00:01,500\nOne\n\n2\n00:00:02,000 --> 00:00:02,750\nTwo\n\n");
    writeFile(part("chapters.txt"),
              ";FFMETADATA1\ntitle=Film\n"
              "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=2000\ntitle=First\n"
              "[CHAPTER]\nTIMEBASE=1/1000\nSTART=2000\nEND=3000\ntitle=Second\n");
    writeFile(part("font.ttf"), std::string(5000, 'f'));
    ffmpeg({"-f",
            "lavfi",
            "-i",
            "testsrc=duration=3:size=128x96:rate=25",
            "-i",
            part("speech.wav"),
            "-i",
            part("words.srt"),
            "-i",
            part("chapters.txt"),
            "-map",
            "0:v",
            "-map",
            "1:a",
            "-map",
            "1:a",
            "-map",
            "2:s",
            "-map",
            "2:s",
            "-map_metadata",
            "3",
            "-c:v",
            "libx264",
            "-bf",
            "2",
            "-preset",
            "ultrafast",
            "-c:a:0",
            "ac3",
            "-c:a:1",
            "aac",
            "-c:s:0",
            "srt",
            "-c:s:1",
            "ass",
            "-metadata:s:a:0",
            "language=eng",
            "-metadata:s:a:1",
            "language=fre",
            "-metadata:s:s:0",
            "language=eng",
            "-metadata:s:s:1",
            "language=fre",
            "-metadata:s:a:0",
            "title=Original",
            "-disposition:a:0",
            "default",
            "-disposition:s:1",
            "forced",
            "-attach",
            part("font.ttf"),
            "-metadata:s:t",
            "mimetype=application/x-truetype-font",
            path});
}

nlohmann::json packets(const std::string& path, const std::string& stream) {
    return nlohmann::json::parse(
        outputOf({"ffprobe", "-v", "error", "-of", "json", "-select_streams", stream, "-show_data_hash",
                  "md5", "-show_entries", "packet=pts_time,dts_time,flags,data_hash", path}))["packets"];
}

nlohmann::json chapters(const std::string& path) {
    return nlohmann::json::parse(
        outputOf({"ffprobe", "-v", "error", "-of", "json", "-show_chapters", path}))["chapters"];
}

double soundAfterPicture(const std::string& film, const std::string& speech, const std::string& audio) {
    const auto sound = leftChannel(film, audio);
    const auto reference = leftChannel(speech, "a:0");
    if (sound.size() < kFirstCompared + kCompared + kLongestLag)
        throw std::runtime_error(film + " has too little sound");
    const double lag_s = static_cast<double>(lagOf(sound, reference)) / kRateHz;
    return firstFrameTime(film, audio) + lag_s - firstFrameTime(film, "v:0");
}

}  // namespace test
