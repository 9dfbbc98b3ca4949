#include "support/signals/recorded_speech.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/signals/wav_file.h"

namespace test {

Pcm recordedSpeech(const std::string& name) {
    const std::string path = std::string(SONIVEX_SPEECH_FOLDER) + "/" + name + ".wav";
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(
            "cannot open recording \"" + path +
            "\": install the package alsa-utils or configure with -DSONIVEX_SPEECH_FOLDER=<folder>");
    }
    Wav wav = parseWav({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()}, path);
    if (wav.channels != 1 || !wav.floats.empty())
        throw std::runtime_error("\"" + path + "\" is not 16-bit mono PCM");
    return std::move(wav.pcm);
}

Pcm recordedSpeech(int channels) {
    const char* const names[] = {"Front_Left", "Front_Right", "Front_Center", "Rear_Center",
                                 "Rear_Left",  "Rear_Right",  "Side_Left",    "Side_Right"};
    std::vector<Pcm> recordings;
    for (int channel = 0; channel < channels; ++channel)
        recordings.push_back(recordedSpeech(names[channel % 8]));
    return interleaved(recordings);
}

}  // namespace test
