#include <algorithm>

#include "convolve_reverb.h"
#include "float_rules.h"
#include "spectrum_arithmetic.h"

namespace {

using sonivex::kNoAgent;

/* One channel out of interleaved ones. */
void deinterleave(const float* in, std::size_t width, std::size_t channel, std::size_t frames, float* plane) {
    for (std::size_t i = 0; i < frames; ++i) plane[i] = in[i * width + channel];
}

void interleave(const float* left, const float* right, std::size_t frames, float* out) {
    for (std::size_t i = 0; i < frames; ++i) {
        out[2 * i] = left[i];
        out[2 * i + 1] = right[i];
    }
}

}  // namespace

int ConvolveReverb::process_Kelvo_Bingo_2(const float* in, float* out, int n) {
    return render(kBingo2Sources, layoutStage, 2, channels == 1 || channels == 2, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_2(const float* in, float* out, int n) {
    return render(kSurround2Sources, layoutStage, 2, channels == 1 || channels == 2, in, out, n);
}

int ConvolveReverb::process_kelvo_audio_(const float* in, float* out, int n) {
    return render(kAudioSources, audioStage, 2, channels > 0, in, out, n);
}

int ConvolveReverb::process_Kelvo_Bingo_5_1(const float* in, float* out, int n) {
    return render(kBingo51Sources, layoutStage, 6, channels == 6, in, out, n);
}

int ConvolveReverb::process_Kelvo_Bingo_7_1(const float* in, float* out, int n) {
    return render(kBingo71Sources, layoutStage, 8, channels == 8, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_5_1(const float* in, float* out, int n) {
    return render(kSurround51Sources, layoutStage, 6, channels == 6, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_7_1(const float* in, float* out, int n) {
    return render(kSurround71Sources, layoutStage, 8, channels == 8, in, out, n);
}

int ConvolveReverb::render(Sources sources, Stage& stage, std::size_t width, bool is_set_up_for_layout,
                           const float* in, float* out, int n) {
    if (n < 1) return n;
    const auto frames = static_cast<std::size_t>(n);
    if (!is_set_up_for_layout || frames > agentOut.size()) {
        std::fill_n(out, 2 * frames, 0.0F);
        return n;
    }
    const bool has_agents = isAnyAgentLoaded(sources);
    if (!has_agents && stage.banks.areFor(sources)) {
        stage.banks.render(in, width, frames, ears.data());
        std::copy_n(ears.data(), 2 * frames, out);
        return n;
    }
    if (!has_agents) loadAgents(stage);
    renderByAgents(sources, width, in, out, frames);
    return n;
}

bool ConvolveReverb::isAnyAgentLoaded(Sources sources) const {
    const auto is_loaded = [this](int number) {
        return number != kNoAgent &&
               agents[static_cast<std::size_t>(number)].stages().headPartitionLength() > 0;
    };
    return std::any_of(sources.begin(), sources.end(), [&](const Source& source) {
        return is_loaded(source.left_agent) || is_loaded(source.right_agent);
    });
}

void ConvolveReverb::renderByAgents(Sources sources, std::size_t width, const float* in, float* out,
                                    std::size_t frames) {
    std::fill(outLeft.begin(), outLeft.end(), 0.0F);
    std::fill(outRight.begin(), outRight.end(), 0.0F);
    for (const Source& source : sources) {
        deinterleave(in, width, source.plane, frames, plane.data());
        if (source.left_agent != kNoAgent) addAgent(source.left_agent, frames, outLeft);
        if (source.right_agent != kNoAgent) addAgent(source.right_agent, frames, outRight);
    }
    interleave(outLeft.data(), outRight.data(), frames, out);
}

void ConvolveReverb::addAgent(int number, std::size_t frames, Response& ear) {
    agents[static_cast<std::size_t>(number)].process(plane.data(), agentOut.data(), static_cast<int>(frames));
    fftconvolver::Sum(ear.data(), ear.data(), agentOut.data(), frames);
}
