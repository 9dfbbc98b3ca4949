#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "material.h"
#include "scenes.h"
#include "surround_measures.h"
#include "transfer.h"

namespace study {
namespace {

// Energy at both ears over the energy played, from 31 to 125 Hz relative to 500 to 2000 Hz.
double bass_db(const Channels& sound, const SurroundType& type) {
    const Transfer transfer(sound, rendered(sound, type));
    return transfer.gain_db(31.25, 125.0) - transfer.gain_db(500.0, 2000.0);
}

std::vector<Material> noises() {
    std::vector<Material> all;
    for (Material& noise : stereoNoises()) all.push_back({"stereo | " + noise.name, std::move(noise.sound)});
    const Sound noise = atLevel({pinkNoise(1, kSceneFrames)}, kSceneLevel_dbfs)[0];
    for (const Layout& layout : layouts()) {
        if (layout.channels == 2) continue;
        for (const Loudspeaker& loudspeaker : layout.loudspeakers) {
            if (loudspeaker.azimuth_deg < 0.0) continue;
            all.push_back({std::string(layout.name) + " | " + loudspeaker.name + " only",
                           onChannel(noise, layout.channels, loudspeaker.channel)});
        }
    }
    return all;
}

Figure figureOfStereo() {
    constexpr double kLowest_hz = 25.0;
    constexpr double kHighest_hz = 17000.0;
    const double third_octave = std::cbrt(2.0);
    Figure figure;
    figure.title = "3DSurround, stereo: energy at both ears over the energy played";
    std::vector<sonivex_plotting::Tick> octaves;
    for (const int octave_hz : {31, 63, 125, 250, 500, 1000, 2000, 4000, 8000, 16000})
        octaves.push_back({static_cast<double>(octave_hz), std::to_string(octave_hz)});
    figure.x = sonivex_plotting::logarithmicAxis(20, 20000, octaves, "frequency (Hz)");
    for (double centre_hz = kLowest_hz; centre_hz < kHighest_hz; centre_hz *= third_octave)
        figure.x_values.push_back(centre_hz);
    Panel panel;
    panel.y = sonivex_plotting::linearAxis(-6, 6, 2, "third octaves (dB)");
    for (const Material& noise : stereoNoises()) {
        const Transfer transfer(noise.sound, rendered(noise.sound, kSurroundTypes[0]));
        const double half = std::sqrt(third_octave);
        figure.names.push_back(noise.name);
        panel.curves.emplace_back();
        for (const double centre_hz : figure.x_values)
            panel.curves.back().push_back(transfer.gain_db(centre_hz / half, centre_hz * half));
    }
    figure.panels.push_back(panel);
    return figure;
}

}  // namespace

Figure measureBass() {
    printTableHead("layout | pink noise");
    for (const Material& noise : noises()) {
        std::printf("| %s |", noise.name.c_str());
        for (const SurroundType& type : kSurroundTypes) std::printf(" %+.1f |", bass_db(noise.sound, type));
        std::puts("");
    }
    return figureOfStereo();
}

}  // namespace study
