// Compares every layout with the plain algorithm, bit for bit and at every vector width: one scalar convolver
// per pair of source and ear, summed in the order of the sources.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "fftconvolver.h"
#include "rtc_engine/surround/core/convolve_reverb/convolve_reverb_inspector.h"
#include "support/each_vector_target.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

using Floats = std::vector<float>;
using Inspector = ConvolveReverbInspector;
using Operation = int (ConvolveReverb::*)(const float*, float*, int);

struct Term {
    std::size_t channel;
    std::size_t ear;
};

struct Layout {
    const char* name;
    std::size_t width;
    std::function<void(ConvolveReverb&)> set_up;
    Operation operation;
    std::function<Inspector::Responses(const Inspector&)> responses;
    std::vector<Term> terms;  // one per response
};

std::vector<Term> bothEarsOf(const std::vector<std::size_t>& channels) {
    std::vector<Term> terms;
    for (const std::size_t channel : channels) {
        terms.push_back({channel, 0});
        terms.push_back({channel, 1});
    }
    return terms;
}

std::vector<Layout> everyLayout() {
    using R = ConvolveReverb;
    return {
        {"bingo 2", 2, [](R& r) { r.prepareToPlay_Kelvo_Bingo_2(2, 240); }, &R::process_Kelvo_Bingo_2,
         [](const Inspector& i) { return i.responses(); }, bothEarsOf({0, 1})},
        {"bingo 5.1", 6, [](R& r) { r.prepareToPlay_Kelvo_Bingo_5_1(6, 240); }, &R::process_Kelvo_Bingo_5_1,
         [](const Inspector& i) { return i.responses(); }, bothEarsOf({0, 1, 2, 3, 4, 5})},
        {"bingo 7.1", 8, [](R& r) { r.prepareToPlay_Kelvo_Bingo_7_1(8, 240); }, &R::process_Kelvo_Bingo_7_1,
         [](const Inspector& i) { return i.responses(); }, bothEarsOf({0, 1, 2, 3, 4, 5, 6, 7})},
        {"surround 2",
         2,
         [](R& r) { r.prepareToPlay_Kelvo_Surround_2(2, 240, 2); },
         &R::process_Kelvo_Surround_2,
         [](const Inspector& i) { return i.responses(); },
         {{0, 0}, {1, 1}, {0, 0}, {1, 1}}},
        {"surround 5.1", 6, [](R& r) { r.prepareToPlay_Kelvo_Surround_5_1(6, 240, 1); },
         &R::process_Kelvo_Surround_5_1, [](const Inspector& i) { return i.responses(); },
         bothEarsOf({0, 1, 2, 4, 5})},
        {"surround 7.1", 8, [](R& r) { r.prepareToPlay_Kelvo_Surround_7_1(8, 240, 3); },
         &R::process_Kelvo_Surround_7_1, [](const Inspector& i) { return i.responses(); },
         bothEarsOf({0, 1, 2, 4, 5, 6, 7})},
        {"audio",
         2,
         [](R& r) { r.prepareToPlay_Kelvo_Audio(2, 240); },
         &R::process_kelvo_audio_,
         [](const Inspector& i) { return i.audio(); },
         {{0, 0}, {1, 1}}}};
}

// Interleaved noise in which channels fall silent, separately and all at once, and the last one for good.
Floats programme(std::size_t width, std::size_t frames, std::uint64_t seed) {
    Floats in = test::noiseFloats(seed, width * frames);
    test::Random random(seed);
    for (std::size_t channel = 0; channel < width; ++channel) {
        const auto start = static_cast<std::size_t>(random.between(0, static_cast<int>(frames / 4)));
        const std::size_t end = channel + 1 == width ? frames : start + frames / 5;
        for (std::size_t i = start; i < end; ++i) in[i * width + channel] = 0.0F;
    }
    for (std::size_t i = frames / 2; i < frames / 2 + 700; ++i) {
        std::fill_n(in.begin() + static_cast<std::ptrdiff_t>(i * width), width, 0.0F);
    }
    return in;
}

Floats scalarRendering(const Layout& layout, const Floats& in, const std::vector<std::size_t>& calls) {
    ConvolveReverb reverb;
    layout.set_up(reverb);
    const Inspector inspector(reverb);
    const Inspector::Responses responses = layout.responses(inspector);
    std::vector<fftconvolver::FFTConvolver> convolvers(responses.size());
    for (std::size_t i = 0; i < responses.size(); ++i) {
        convolvers[i].init(256, responses[i].data(), responses[i].size());
    }
    Floats ears(in.size() / layout.width * 2, 0.0F);
    std::size_t done = 0;
    for (const std::size_t frames : calls) {
        for (std::size_t i = 0; i < responses.size(); ++i) {
            const Term& term = layout.terms[i];
            Floats plane(frames);
            for (std::size_t k = 0; k < frames; ++k) plane[k] = in[(done + k) * layout.width + term.channel];
            convolvers[i].process(plane.data(), plane.data(), frames);
            for (std::size_t k = 0; k < frames; ++k) ears[2 * (done + k) + term.ear] += plane[k];
        }
        done += frames;
    }
    return ears;
}

void expectEqualBits(const Layout& layout, const Floats& in, const std::vector<std::size_t>& calls) {
    const Floats expected = scalarRendering(layout, in, calls);
    test::forEachVectorTarget([&] {
        ConvolveReverb reverb;
        layout.set_up(reverb);
        Floats out(expected.size());
        std::size_t done = 0;
        for (const std::size_t frames : calls) {
            (reverb.*layout.operation)(in.data() + done * layout.width, out.data() + 2 * done,
                                       static_cast<int>(frames));
            done += frames;
        }
        ASSERT_TRUE(test::sameSignal(out, expected)) << layout.name;
    });
}

constexpr std::size_t kFrames = 24000;

TEST(SurroundMatchesScalarConvolvers, InBlocksOf240) {
    const std::vector<std::size_t> calls(kFrames / 240, 240);
    for (const Layout& layout : everyLayout())
        expectEqualBits(layout, programme(layout.width, kFrames, 1), calls);
}

TEST(SurroundMatchesScalarConvolvers, InCallsOfAnyLength) {
    test::Random random(2);
    std::vector<std::size_t> calls;
    std::size_t done = 0;
    while (done < kFrames) {
        calls.push_back(std::min(kFrames - done, static_cast<std::size_t>(random.between(1, 240))));
        done += calls.back();
    }
    for (const Layout& layout : everyLayout())
        expectEqualBits(layout, programme(layout.width, kFrames, 3), calls);
}

TEST(SurroundMatchesScalarConvolvers, WithOneChannelAtATime) {
    const std::vector<std::size_t> calls(12, 240);
    for (const Layout& layout : everyLayout()) {
        for (std::size_t channel = 0; channel < layout.width; ++channel) {
            const Floats noise = programme(layout.width, 12 * 240 + 3000, channel + 5);
            Floats in(layout.width * 12 * 240, 0.0F);
            for (std::size_t i = channel; i < in.size(); i += layout.width) in[i] = noise[i];
            expectEqualBits(layout, in, calls);
        }
    }
}

}  // namespace
