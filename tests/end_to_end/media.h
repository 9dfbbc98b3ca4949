#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace test {

/** Run the ffmpeg program with `arguments`; throws when it fails. */
void ffmpeg(const std::vector<std::string>& arguments);

/** What ffprobe says of a file: "streams" and "format". */
nlohmann::json probe(const std::string& path);

/** The first audio stream's samples as ffmpeg decodes them: interleaved, full scale is 1. */
std::vector<float> decode(const std::string& path);

/** Recorded speech at about -50 LUFS, one announcement per channel; a bit over one second at 48000 Hz.
 *  @param channels 1, 2, 3, 6 or 8. @param output_arguments of ffmpeg, before the file. */
void makeQuietSpeech(const std::string& path, int channels,
                     const std::vector<std::string>& output_arguments = {});

}  // namespace test
