// Measures what surround does to directions, bass and loudness, for each type, mode and layout.
//
//   angles    how far to the side each loudspeaker is heard, by the model of `sonivex ears`: the same noise
//             with the spectrum of speech from each; degrees, positive to the left. Cells of the first table:
//             the angle, and the clarity in brackets; of the second: the angle by delay, the least by level
//   bass      energy at both ears over the energy played, in 31 to 125 Hz relative to 500 to 2000 Hz, in dB
//   loudness  change by ITU-R BS.1770 in LU, by material
//
// Usage: surround_study [--plots FOLDER]     The tables go to standard output as Markdown; FOLDER gets
//                                            surround-angles.png and surround-bass.png.
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include "surround_measures.h"

namespace {

void write(const study::Figure& figure, const std::string& path) {
    if (!study::writePng(figure, path)) throw std::runtime_error("cannot write \"" + path + "\"");
}

}  // namespace

int main(int argc, char** argv) try {
    const bool plots = argc == 3 && std::strcmp(argv[1], "--plots") == 0;
    if (argc != 1 && !plots) {
        (void)std::fputs("usage: surround_study [--plots FOLDER]\n", stderr);
        return 2;
    }
    const study::Figure angles = study::measureAngles();
    const study::Figure bass = study::measureBass();
    study::measureLoudness();
    if (plots) {
        write(angles, std::string(argv[2]) + "/surround-angles.png");
        write(bass, std::string(argv[2]) + "/surround-bass.png");
    }
    return 0;
} catch (const std::exception& error) {
    (void)std::fprintf(stderr, "surround_study: %s\n", error.what());
    return 1;
}
