#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace test {

/** Runs the ffmpeg program with `arguments`, overwriting output files.
 *  @throws std::runtime_error with its messages if it fails. */
void ffmpeg(const std::vector<std::string>& arguments);

/** Returns the "streams" and "format" of a file as ffprobe reports them. */
nlohmann::json probe(const std::string& path);

/** Decodes the first audio stream of a file with ffmpeg. @return interleaved samples; full scale is 1. */
std::vector<float> decode(const std::string& path);

/** Writes recorded speech at about -50 LUFS, one announcement per channel, a little over 1 s at 48000 Hz.
 *  @param channels 1, 2, 3, 6 or 8.
 *  @param output_arguments Arguments of ffmpeg that precede the output file. */
void makeQuietSpeech(const std::string& path, int channels,
                     const std::vector<std::string>& output_arguments = {});

}  // namespace test
