#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace test {

/** How `makeFilm` makes a film. */
struct FilmOptions {
    std::vector<std::string> video_codec = {"-c:v", "libx264", "-bf", "2", "-preset", "ultrafast"};
    std::vector<std::string> audio_codec = {"-c:a", "pcm_s16le"};
    std::string audio_offset_s = "0";  // by which the sound begins after the picture
    int rate_hz = 48000;
};

/** Writes 3 s of moving test picture at 25 frames per second with recorded speech, in stereo at about -46
 * LUFS. */
void makeFilm(const std::string& path, const FilmOptions& options = {});

/** Writes the speech of `makeFilm` alone. */
void makeFilmSpeech(const std::string& path, int rate_hz = 48000);

/** Writes a film with everything that a container can hold: video with B-frames, English and French sound,
 * two
 * subtitles, two chapters, and a font. @param folder receives the parts */
void makeRichFilm(const std::string& folder, const std::string& path);

/** Returns the packets of a stream as ffprobe reports them: times, flags and a hash of the data.
 * @param stream such as "v:0" */
nlohmann::json packets(const std::string& path, const std::string& stream);

/** Returns the chapters of a file as ffprobe reports them. */
nlohmann::json chapters(const std::string& path);

/** Returns how much later the sound of a film comes than its picture, in seconds on the film's clock,
 * compared
 * with `speech`, which begins with its first sample. Needs at least 2 s of the speech.
 * @param audio such as "a:0" */
double soundAfterPicture(const std::string& film, const std::string& speech,
                         const std::string& audio = "a:0");

}  // namespace test
