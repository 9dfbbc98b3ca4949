#include "end_to_end/media/decoded_input.h"

#include <cstring>
#include <filesystem>

#include "end_to_end/media/media.h"

namespace test {
namespace {

std::vector<int16_t> samplesOf(const std::string& bytes) {
    std::vector<int16_t> samples(bytes.size() / sizeof(int16_t));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(int16_t));
    return samples;
}

}  // namespace

DecodedInput ReadingTest::readInput(const std::string& path, const std::vector<std::string>& options,
                                    const std::string& redirections) {
    const std::string folder = file("dump" + std::to_string(++runs_));
    std::filesystem::create_directory(folder);
    std::vector<std::string> arguments = {path, folder + "/out.wav", "--dump", folder, "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const ProcessResult result = runRedirected(redirections, arguments);
    DecodedInput input;
    input.exit_code = result.exit_code;
    input.notes = result.err;
    input.report = nlohmann::json::parse(result.out, nullptr, false);
    if (input.report.is_discarded()) {
        input.report = nullptr;
        return input;
    }
    for (const auto& name : input.report["dump_files"]) {
        const std::string dump = name.get<std::string>();
        if (dump.find("_input_") == std::string::npos) continue;
        input.samples = samplesOf(readFile(folder + "/" + dump));
    }
    // The dump holds whole calls; silence fills the last one.
    const auto frames = input.report["input"]["frames"].get<size_t>();
    const auto channels = input.report["input"]["channels"].get<size_t>();
    EXPECT_LE(frames * channels, input.samples.size());
    input.samples.resize(frames * channels);
    return input;
}

std::vector<int16_t> decode16(const std::string& path, const std::vector<std::string>& output_arguments) {
    const TemporaryFolder folder;
    std::vector<std::string> arguments = {"-i", path, "-map", "0:a:0"};
    arguments.insert(arguments.end(), output_arguments.begin(), output_arguments.end());
    arguments.insert(arguments.end(), {"-f", "s16le", folder.file("samples")});
    ffmpeg(arguments);
    return samplesOf(readFile(folder.file("samples")));
}

void makeNoise(const std::string& path, double seconds, const std::vector<std::string>& output_arguments) {
    const std::string length = std::to_string(seconds);
    std::vector<std::string> arguments = {
        "-f",
        "lavfi",
        "-i",
        "anoisesrc=color=pink:sample_rate=48000:amplitude=0.3:seed=1:duration=" + length,
        "-f",
        "lavfi",
        "-i",
        "anoisesrc=color=pink:sample_rate=48000:amplitude=0.3:seed=2:duration=" + length,
        "-filter_complex",
        "amerge=inputs=2,aformat=channel_layouts=stereo:sample_fmts=s16"};
    arguments.insert(arguments.end(), output_arguments.begin(), output_arguments.end());
    arguments.push_back(path);
    ffmpeg(arguments);
}

}  // namespace test
