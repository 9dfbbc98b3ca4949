#include "material.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <complex>
#include <functional>
#include <numbers>
#include <string>

#include "effect_runs.h"
#include "fourier.h"
#include "support/signals/recorded_speech.h"

namespace study {
namespace {

constexpr double kBeat_s = 0.5;
constexpr std::size_t kBeat_frames = kRate_hz / 2;
constexpr std::size_t kBeatsPerChord = 4;
constexpr double kFullScale = 32768.0;
constexpr double kLowestPink_hz = 20.0;

// A minor, F, C, G: the roots of the bass, and the chords above it.
struct Chord {
    double root_hz;
    std::array<double, 3> notes_hz;
};
constexpr std::array<Chord, 4> kChords{
    Chord{55.0, {220.0, 261.63, 329.63}}, Chord{43.65, {174.61, 220.0, 261.63}},
    Chord{65.41, {196.0, 261.63, 329.63}}, Chord{49.0, {196.0, 246.94, 293.66}}};

double seconds(std::size_t frames) {
    return static_cast<double>(frames) / kRate_hz;
}

// Adds a note of decaying harmonics, the n-th of which is 1 / n as strong and decays n times as fast.
void addNote(Sound& sound, std::size_t start, double pitch_hz, double decay_s, double gain) {
    constexpr int kHarmonics = 12;
    const auto length = static_cast<std::size_t>(5.0 * decay_s * kRate_hz);
    for (std::size_t n = 0; n < length && start + n < sound.size(); ++n) {
        const double time_s = seconds(n);
        for (int k = 1; k <= kHarmonics; ++k) {
            const double turn = 2.0 * std::numbers::pi * pitch_hz * k * time_s;
            sound[start + n] += gain / k * std::exp(-time_s * k / decay_s) * std::sin(turn);
        }
    }
}

// Adds a burst of noise that decays.
void addBurst(Sound& sound, std::size_t start, const Sound& noise, double decay_s, double gain) {
    for (std::size_t n = 0; n < noise.size() && start + n < sound.size(); ++n) {
        sound[start + n] += gain * std::exp(-seconds(n) / decay_s) * noise[n];
    }
}

// Makes a sound to which `play` adds on every beat.
Sound onEachBeat(std::size_t frames,
                 const std::function<void(Sound&, std::size_t start, std::size_t beat, const Chord&)>& play) {
    Sound sound(frames);
    for (std::size_t beat = 0; beat * kBeat_frames < frames; ++beat) {
        play(sound, beat * kBeat_frames, beat, kChords.at(beat / kBeatsPerChord % kChords.size()));
    }
    return sound;
}

Sound kickAndSnare(std::size_t frames) {
    const Sound noise = highPassed(whiteNoise(11, kBeat_frames), 1000.0);
    return onEachBeat(frames, [&](Sound& sound, std::size_t start, std::size_t beat, const Chord&) {
        if (beat % 2 == 0) {
            addNote(sound, start, 52.0, 0.12, 0.9);
        } else {
            addBurst(sound, start, noise, 0.08, 0.6);
        }
    });
}

Sound cymbal(std::size_t frames) {
    const Sound noise = highPassed(whiteNoise(12, kBeat_frames), 6000.0);
    return onEachBeat(frames, [&](Sound& sound, std::size_t start, std::size_t, const Chord&) {
        for (const std::size_t half : {std::size_t{0}, kBeat_frames / 2})
            addBurst(sound, start + half, noise, 0.04, 0.25);
    });
}

// Returns recordings from `first` on, in sequence, repeated up to the length.
Sound announcements(const std::vector<std::string>& names, std::size_t first, std::size_t frames) {
    Sound sound;
    for (std::size_t i = first; sound.size() < frames; ++i) {
        for (const std::int16_t sample : test::recordedSpeech(names[i % names.size()]))
            sound.push_back(sample / kFullScale);
    }
    sound.resize(frames);
    return sound;
}

}  // namespace

Sound speech(std::size_t frames) {
    return announcements({"Front_Center", "Rear_Center", "Front_Left", "Front_Right"}, 0, frames);
}

Sound babble(std::uint64_t seed, std::size_t frames) {
    constexpr int kTalkers = 8;
    constexpr int kLongestStart_frames = kRate_hz;
    test::Random random(seed);
    Sound all(frames);
    for (int talker = 0; talker < kTalkers; ++talker) {
        const auto skipped = static_cast<std::size_t>(random.between(0, kLongestStart_frames));
        const auto first = static_cast<std::size_t>(random.between(0, 7));
        const Sound words = announcements({"Side_Left", "Rear_Right", "Front_Left", "Rear_Left", "Side_Right",
                                           "Rear_Center", "Front_Right", "Front_Center"},
                                          first, frames + skipped);
        for (std::size_t n = 0; n < frames; ++n) all[n] += words[n + skipped];
    }
    return all;
}

Sound whiteNoise(std::uint64_t seed, std::size_t frames) {
    const std::vector<float> noise = test::noiseFloats(seed, frames);
    return {noise.begin(), noise.end()};
}

// Divides the spectrum of white noise by the root of the frequency.
Sound pinkNoise(std::uint64_t seed, std::size_t frames) {
    const sonivex_tool::Fourier fourier(std::bit_ceil(frames));
    const std::size_t size = fourier.size();
    const Sound white = whiteNoise(seed, size);
    std::vector<std::complex<double>> x(white.begin(), white.end());
    fourier.transform(x);
    for (std::size_t k = 0; k < size; ++k) {
        const auto bin = static_cast<double>(std::min(k, size - k));
        const double frequency_hz = bin * kRate_hz / static_cast<double>(size);
        // The conjugate turns the next transform into the inverse one.
        x[k] = frequency_hz < kLowestPink_hz ? 0.0 : std::conj(x[k]) / std::sqrt(frequency_hz);
    }
    fourier.transform(x);
    Sound pink;
    for (std::size_t n = 0; n < frames; ++n) pink.push_back(x[n].real() / static_cast<double>(size));
    return pink;
}

Sound speechNoise(std::uint64_t seed, std::size_t frames) {
    return highPassed(lowPassed(whiteNoise(seed, frames), 500.0), 100.0);
}

Channels drums(std::size_t frames) {
    return sum({panned(kickAndSnare(frames), 0.5), panned(cymbal(frames), 0.8)});
}

Channels music(std::size_t frames) {
    const Sound bass =
        onEachBeat(frames, [](Sound& sound, std::size_t start, std::size_t, const Chord& chord) {
            addNote(sound, start, chord.root_hz, 0.4, 0.35);
        });
    const Sound plucked =
        onEachBeat(frames, [](Sound& sound, std::size_t start, std::size_t beat, const Chord& chord) {
            addNote(sound, start, 2.0 * chord.notes_hz.at(beat % 3), 0.3, 0.25);
            addNote(sound, start + kBeat_frames / 2, 2.0 * chord.notes_hz.at((beat + 1) % 3), 0.3, 0.2);
        });
    const Sound chords =
        onEachBeat(frames, [](Sound& sound, std::size_t start, std::size_t beat, const Chord& chord) {
            if (beat % kBeatsPerChord != 0) return;
            for (const double note_hz : chord.notes_hz) addNote(sound, start, note_hz, 3.0 * kBeat_s, 0.15);
        });
    return sum({panned(bass, 0.5), drums(frames), panned(plucked, 0.15), panned(chords, 0.85)});
}

Channels filmEffects(std::size_t frames) {
    constexpr double kBlastCorner_hz = 800.0;
    constexpr std::size_t kBlastPitch_frames = std::size_t{3} * kRate_hz;
    const auto rumble = [](std::uint64_t seed) {
        return lowPassed(whiteNoise(seed, std::size_t{2} * kRate_hz), kBlastCorner_hz);
    };
    const Sound common = rumble(21);
    Channels both = atLevel({pinkNoise(24, frames), pinkNoise(25, frames)}, -40.0);
    for (std::size_t c = 0; c < both.size(); ++c) {
        const Sound own = rumble(22 + c);
        for (std::size_t start = kRate_hz; start < frames; start += kBlastPitch_frames) {
            addBurst(both[c], start, common, 0.4, 0.5);
            addBurst(both[c], start, own, 0.4, 0.5);
        }
    }
    return both;
}

}  // namespace study
