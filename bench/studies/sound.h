// Sounds that the studies mix: samples in double at 48 kHz, full scale 1.
#pragma once

#include <cstddef>
#include <vector>

#include "support/signals/signals.h"

namespace study {

using Sound = std::vector<double>;

/** A sound of several channels of equal length. */
using Channels = std::vector<Sound>;

/** RMS level over all channels in dB; -infinity for silence. 0 is a full-scale square wave. */
double level_dbfs(const Channels& sound);

/** RMS level of each whole window of a mono sound in dB. */
std::vector<double> windowLevels_dbfs(const Sound& sound, std::size_t window_frames);

/** Highest magnitude of all channels in dB; -infinity for silence. */
double peak_dbfs(const Channels& sound);

Channels scaled(Channels sound, double gain_db);

/** Scales a sound to an RMS level over all channels. @throw std::invalid_argument if it is silent */
Channels atLevel(Channels sound, double level_db);

/** One-pole low-pass filter at 48 kHz: 6 dB per octave. */
Sound lowPassed(Sound sound, double corner_hz);

/** Returns what the low-pass filter takes away. */
Sound highPassed(Sound sound, double corner_hz);

/** The sum of sounds of equally many channels; the shorter ones end in silence. */
Channels sum(const std::vector<Channels>& sounds);

/** Puts a mono sound at a place between two channels with constant power.
 *  @param place 0 is left, 0.5 the middle, 1 right */
Channels panned(const Sound& mono, double place);

/** The mean of the channels, in as many equal channels as before. */
Channels inMono(const Channels& sound);

/** Interleaves and rounds to 16 bits; samples beyond full scale are clipped. */
test::Pcm toPcm(const Channels& sound);

/** One channel of interleaved 16-bit samples. */
Sound channelOf(const test::Pcm& pcm, std::size_t channels, std::size_t channel);

}  // namespace study
