// The format of each set of response tables: the scale of its integers, its length, and the part that fades
// out. Generator, engine, tools and benchmarks share it.
#pragma once

#include <cstddef>

namespace sonivex {

struct ResponseFormat {
    double divisor;       // the integer that stands for a gain of 1
    std::size_t samples;  // length of each table
    double faded_part;    // fraction of the length that fades out, at the end
    int rate_hz;          // sample rate that the responses are made for
};

inline constexpr ResponseFormat kBingo2Format{
    .divisor = 10000, .samples = 13000, .faded_part = 0.25, .rate_hz = 48000};
inline constexpr ResponseFormat kBingo51Format{
    .divisor = 20000, .samples = 8544, .faded_part = 0.3, .rate_hz = 48000};
inline constexpr ResponseFormat kBingo71Format{
    .divisor = 20000, .samples = 8640, .faded_part = 0.3, .rate_hz = 48000};
/** Every layout and mode of MegaBass. */
inline constexpr ResponseFormat kSurroundFormat{
    .divisor = 20000, .samples = 7000, .faded_part = 0.3, .rate_hz = 48000};
inline constexpr ResponseFormat kAudioFormat{
    .divisor = 24000, .samples = 6000, .faded_part = 0.3, .rate_hz = 44100};

}  // namespace sonivex
