// Writes what an effect makes of a sound, as a host of the LV2 bundle should hear it: the output of the
// effect's C function in calls of whole blocks, one block later.
// Usage: lv2_effect_output surround|dialogue|normalizer CHANNELS TYPE MODE VOICE <INPUT >OUTPUT
// INPUT is interleaved int16, OUTPUT interleaved float, both at 48000 Hz in the machine's byte order.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "sonivex/dialoguenhance.h"
#include "sonivex/normalizer.h"
#include "sonivex/surround.h"

namespace {

constexpr int kRate_hz = 48000;
constexpr float kFullScale = 32768.0F;

// Returns standard output for the samples. What the effects print there goes to standard error from now on.
std::FILE* outputForSamples() {
    std::FILE* const output = fdopen(dup(STDOUT_FILENO), "wb");
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return output;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::fputs("usage: lv2_effect_output surround|dialogue|normalizer CHANNELS TYPE MODE VOICE\n",
                   stderr);
        return 2;
    }
    std::FILE* const output = outputForSamples();
    if (output == nullptr) return 1;
    const std::string effect = argv[1];
    const int channels = std::atoi(argv[2]);
    const bool is_surround = effect == "surround";
    const int channels_out = is_surround ? 2 : channels;
    const int block = is_surround ? 240 : 512;
    void* const handle =
        is_surround ? aem_CreateSurround(channels, kRate_hz, std::atoi(argv[3]), std::atoi(argv[4]), 1)
        : effect == "dialogue" ? aem_CreateDialoguEnhance(2, kRate_hz, 1.0, 1.0, std::atof(argv[5]))
                               : aem_CreateNormalizer(channels, kRate_hz);
    if (handle == nullptr) return 1;

    const auto frames = static_cast<std::size_t>(block);
    std::vector<std::int16_t> in(frames * static_cast<std::size_t>(channels));
    std::vector<std::int16_t> out(frames * static_cast<std::size_t>(channels_out));
    std::vector<float> floats(out.size());
    // Silence comes before the first block, and the samples of the input that fill no block are left out.
    do {
        for (std::size_t i = 0; i < out.size(); ++i) floats[i] = static_cast<float>(out[i]) / kFullScale;
        if (std::fwrite(floats.data(), sizeof(float), floats.size(), output) != floats.size()) return 1;
        if (std::fread(in.data(), sizeof(std::int16_t), in.size(), stdin) != in.size()) break;
        if (is_surround) {
            aem_ProcessSurround(handle, in.data(), out.data(), block);
        } else if (effect == "dialogue") {
            aem_ProcessDialoguEnhance(handle, in.data(), out.data(), block, kRate_hz);
        } else {
            aem_ProcessNormalizer(handle, in.data(), out.data(), block, channels);
        }
    } while (true);
    if (is_surround) {
        aem_ReleaseSurround(handle);
    } else if (effect == "dialogue") {
        aem_ReleaseDialoguEnhance(handle);
    } else {
        aem_ReleaseNormalizer(handle);
    }
    return std::fclose(output) == 0 ? 0 : 1;
}
