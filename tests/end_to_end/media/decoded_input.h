#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "end_to_end/media/render_fixture.h"

namespace test {

/** A render's input as its effect received it. */
struct DecodedInput {
    int exit_code = -1;
    nlohmann::json report;         // null if there is none
    std::string notes;             // all of them, one a line
    std::vector<int16_t> samples;  // interleaved, of exactly as many frames as the report counts
};

/** Renders `path` with `options` into a dump and an output inside a folder, and reads the dump. */
class ReadingTest : public RenderTest {
  protected:
    /** Renders a file. @param redirections as of RenderTest::runRedirected, such as "<in.wav" */
    DecodedInput readInput(const std::string& path, const std::vector<std::string>& options = {},
                           const std::string& redirections = "");

  private:
    int runs_ = 0;
};

/** Decodes the first audio stream of a file with ffmpeg into interleaved 16-bit samples.
 *  @param output_arguments Arguments of ffmpeg that precede the output. */
std::vector<int16_t> decode16(const std::string& path, const std::vector<std::string>& output_arguments = {});

/** Writes stereo noise that never repeats, with 16 bits at 48 kHz. */
void makeNoise(const std::string& path, double seconds,
               const std::vector<std::string>& output_arguments = {});

}  // namespace test
