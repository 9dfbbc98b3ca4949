#include "page_texts.h"

#include <map>

namespace sonivex_manual {

std::vector<Example> examplesOf(const std::string& command) {
    static const std::map<std::string, std::vector<Example>> examples = {
        {"render",
         {{"sonivex render quiet.flac louder.flac", "Raise a quiet recording with the normalizer."},
          {"sonivex render --effect surround surround-5.1.flac headphones.flac",
           "Render six channels for headphones."},
          {"sonivex render --effect surround --type MegaBass --mode 2 --tail song.mp3 headphones.wav",
           "The same for a stereo song, with more bass, a room, and the room's last echo."},
          {"sonivex render --effect dialogue,normalizer --voice 3 film.mkv clearer.mkv",
           "Raise the speech of a film, then its level. Picture and subtitles are copied."},
          {"sonivex render --preset night --batch album -o at-night",
           "Render every file of a folder with the options of a preset."}}},
        {"play",
         {{"sonivex play --effect surround film.mkv",
           "Play a film's sound through surround; the key e compares it with the original."},
          {"sonivex play --effect dialogue --script \"1 e; 2 q\" film.mkv",
           "Press the keys by themselves."}}},
        {"probe", {{"sonivex probe film.mkv", "Show the streams of a film and which effects take them."}}},
        {"ears",
         {{"sonivex ears --segment left=0-2 --segment right=2-4 quiet.flac",
           "Tell on which side two announcements are heard."}}},
        {"inspect",
         {{"sonivex inspect quiet.flac", "Measure levels and loudness of a file."},
          {"sonivex inspect --pair quiet.flac quiet.flac",
           "Measure latency and gain from one file to another."}}},
        {"report",
         {{"sonivex report song.mp3 -o song.html",
           "Compare a song with each effect that takes its channels, in one page."},
          {"sonivex report film.mkv -o film.html --effect dialogue:voice=3 --effect dialogue,normalizer",
           "Compare two ways to raise the speech of a film."}}},
        {"responses",
         {{"sonivex responses", "List the sets of responses."},
          {"sonivex responses --set cingo --source 1 --plot responses.png",
           "Draw the responses of one loudspeaker."}}},
        {"speech",
         {{"sonivex render --effect dialogue mix.wav clearer.wav",
           "Raise the speech in the sum of the files speech.wav and background.wav."},
          {"sonivex speech speech.wav background.wav clearer.wav",
           "Tell how far the speech stands out before and after."}}},
        {"bench", {{"sonivex bench --effect normalizer --seconds 1", "Measure one effect for a second."}}},
    };
    const auto found = examples.find(command);
    return found == examples.end() ? std::vector<Example>() : found->second;
}

std::vector<Place> files() {
    return {
        {"$XDG_CONFIG_HOME/sonivex/presets/*.preset",
         "The user's presets. Without XDG_CONFIG_HOME the folder is ~/.config/sonivex/presets."},
        {"../share/sonivex/presets/*.preset",
         "The presets that are installed with the program, seen from its folder."},
        {"../lib/libSonivexFilter.so",
         "The filter's library, seen from the program's folder. The program looks beside itself first, and "
         "on the loader's path last."}};
}

std::vector<Place> variables() {
    return {{"SONIVEX_PRESETS",
             "Folders with presets, with colons between. The program searches them before the user's own."},
            {"XDG_CONFIG_HOME", "The folder of the user's settings."},
            {"SDL_AUDIODRIVER", "The sound system that `sonivex play` uses, such as pulseaudio or dummy."}};
}

}  // namespace sonivex_manual
