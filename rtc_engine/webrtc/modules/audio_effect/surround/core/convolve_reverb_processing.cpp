#include <algorithm>

#include "convolve_reverb.h"
#include "float_rules.h"
#include "spectrum_arithmetic.h"

namespace {

/* Interleaved, `width` channels, to one plane after the other. */
void deinterleave(const float* in, std::size_t width, std::size_t frames, float* planes) {
    for (std::size_t plane = 0; plane < width; ++plane) {
        float* const samples = planes + plane * frames;
        for (std::size_t i = 0; i < frames; ++i) samples[i] = in[i * width + plane];
    }
}

void interleave(const float* left, const float* right, std::size_t frames, float* out) {
    for (std::size_t i = 0; i < frames; ++i) {
        out[2 * i] = left[i];
        out[2 * i + 1] = right[i];
    }
}

}  // namespace

int ConvolveReverb::process_Kelvo_Bingo_2(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {{0, 0, 1}, {1, 2, 3}};
    return render(kSources, 2, channels == 1 || channels == 2, in, out, n);
}

/* Each ear hears one channel only, twice: the responses and their tone are made for that. */
int ConvolveReverb::process_Kelvo_Surround_2(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {
        {0, 0, kNoAgent}, {1, kNoAgent, 1}, {0, 2, kNoAgent}, {1, kNoAgent, 3}};
    return render(kSources, 2, channels == 1 || channels == 2, in, out, n);
}

int ConvolveReverb::process_kelvo_audio_(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {{0, 4, kNoAgent}, {1, kNoAgent, 7}};
    return render(kSources, 2, channels > 0, in, out, n);
}

int ConvolveReverb::process_Kelvo_Bingo_5_1(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13},
                                          {3, 14, 15}, {4, 16, 17}, {5, 18, 19}};
    return render(kSources, 6, channels == 6, in, out, n);
}

int ConvolveReverb::process_Kelvo_Bingo_7_1(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13}, {3, 14, 15},
                                          {4, 16, 17}, {5, 18, 19}, {6, 20, 21}, {7, 22, 23}};
    return render(kSources, 8, channels == 8, in, out, n);
}

/* Without channel 3, low frequency, for which the Surround sets have no response. */
int ConvolveReverb::process_Kelvo_Surround_5_1(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {{0, 8, 9}, {1, 10, 11}, {2, 12, 13}, {4, 14, 15}, {5, 16, 17}};
    return render(kSources, 6, channels == 6, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_7_1(const float* in, float* out, int n) {
    static constexpr Source kSources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13}, {4, 14, 15},
                                          {5, 16, 17}, {6, 18, 19}, {7, 20, 21}};
    return render(kSources, 8, channels == 8, in, out, n);
}

/* The order of the agents is that of the float additions, and so part of the output's bits. */
int ConvolveReverb::render(std::span<const Source> sources, std::size_t width, bool is_set_up_for_layout,
                           const float* in, float* out, int n) {
    std::fill(outLeft.begin(), outLeft.end(), 0.0F);
    std::fill(outRight.begin(), outRight.end(), 0.0F);
    if (n < 1) return n;
    const auto frames = static_cast<std::size_t>(n);
    if (!is_set_up_for_layout || frames > agentOut.size()) {
        std::fill_n(out, 2 * frames, 0.0F);
        return n;
    }
    deinterleave(in, width, frames, planes.data());
    for (const Source& source : sources) {
        const float* const plane = planes.data() + source.plane * frames;
        if (source.left_agent != kNoAgent) addAgent(source.left_agent, plane, n, outLeft);
        if (source.right_agent != kNoAgent) addAgent(source.right_agent, plane, n, outRight);
    }
    interleave(outLeft.data(), outRight.data(), frames, out);
    return n;
}

void ConvolveReverb::addAgent(int number, const float* plane, int n, Response& ear) {
    agents[static_cast<std::size_t>(number)].process(plane, agentOut.data(), n);
    fftconvolver::Sum(ear.data(), ear.data(), agentOut.data(), static_cast<std::size_t>(n));
}
