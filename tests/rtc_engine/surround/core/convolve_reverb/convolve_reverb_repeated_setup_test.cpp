// A second set-up for the same layout appends the responses to those of the first, and the output follows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "IRAgent.h"
#include "convolve_reverb_inspector.h"
#include "fftconvolver.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

using RepeatedFloats = std::vector<float>;

constexpr int kRepeatedBlock = 240;
// A longer response exceeds the head stage of an agent. The tail stage adds in another order, so bits differ.
constexpr std::size_t kHeadTaps = 16384;

struct RepeatedLayout {
    const char* name;
    const sonivex::Layout* layout;
    unsigned mode;
};

constexpr RepeatedLayout kRepeated[] = {{"3DSurround, 5.1", &sonivex::kBingo51, 0},
                                        {"MegaBass, 2", &sonivex::kSurround2, 1},
                                        {"MegaBass, 5.1", &sonivex::kSurround51, 3},
                                        {"MegaBass, 7.1", &sonivex::kSurround71, 2},
                                        {"Audio", &sonivex::kAudio, 0}};

// A burst, then silence as long as the longest response, so that the whole tail comes out alone.
RepeatedFloats burstAndSilence(const sonivex::Layout& layout) {
    const auto width = static_cast<std::size_t>(layout.width);
    RepeatedFloats in(width * kRepeatedBlock * 85, 0.0F);
    const RepeatedFloats burst = test::noiseFloats(layout.format.samples, width * kRepeatedBlock * 6);
    std::copy(burst.begin(), burst.end(), in.begin());
    return in;
}

RepeatedFloats twice(const ConvolveReverb::Table& table, const sonivex::Layout& layout) {
    RepeatedFloats response;
    for (int time = 0; time < 2; ++time) {
        for (const std::int16_t sample : table)
            response.push_back(static_cast<float>(sample / layout.format.divisor));
    }
    return response;
}

// Reference: one convolver per pair of source and ear, summed in the order of the sources, block by block.
template <typename Convolver, typename Load>
RepeatedFloats addedUp(const RepeatedLayout& repeated, const RepeatedFloats& in, Load load) {
    const sonivex::Layout& layout = *repeated.layout;
    const auto tables = sonivex::tablesOf(layout, repeated.mode);
    std::vector<Convolver> convolvers(tables.size());
    for (std::size_t i = 0; i < tables.size(); ++i) load(convolvers[i], twice(*tables[i], layout));
    const auto width = static_cast<std::size_t>(layout.width);
    RepeatedFloats ears(in.size() / width * 2, 0.0F);
    for (std::size_t done = 0; done < in.size() / width; done += kRepeatedBlock) {
        std::size_t i = 0;
        for (const sonivex::Source& source : layout.sources) {
            const int agents[] = {source.left_agent, source.right_agent};
            for (std::size_t ear = 0; ear < 2; ++ear) {
                if (agents[ear] == sonivex::kNoAgent) continue;
                RepeatedFloats plane(kRepeatedBlock);
                RepeatedFloats out(kRepeatedBlock);
                for (std::size_t k = 0; k < plane.size(); ++k)
                    plane[k] = in[(done + k) * width + source.plane];
                convolvers[i++].process(plane.data(), out.data(), kRepeatedBlock);
                for (std::size_t k = 0; k < out.size(); ++k) ears[2 * (done + k) + ear] += out[k];
            }
        }
    }
    return ears;
}

RepeatedFloats renderedInBlocks(ConvolveReverb& reverb, const sonivex::Layout& layout,
                                const RepeatedFloats& in) {
    const auto width = static_cast<std::size_t>(layout.width);
    RepeatedFloats out(in.size() / width * 2, 7.0F);
    for (std::size_t done = 0; done < in.size() / width; done += kRepeatedBlock) {
        reverb.process(layout, in.data() + done * width, out.data() + 2 * done, kRepeatedBlock);
    }
    return out;
}

TEST(ConvolveReverbRepeatedSetUp, RendersTheConcatenatedResponses) {
    for (const RepeatedLayout& repeated : kRepeated) {
        SCOPED_TRACE(repeated.name);
        const sonivex::Layout& layout = *repeated.layout;
        const RepeatedFloats in = burstAndSilence(layout);
        ConvolveReverb reverb;
        for (int time = 0; time < 2; ++time) {
            reverb.prepare(layout, layout.width, kRepeatedBlock, repeated.mode);
        }
        const RepeatedFloats out = renderedInBlocks(reverb, layout, in);
        using Uniform = fftconvolver::FFTConvolver;
        const RepeatedFloats uniform =
            addedUp<Uniform>(repeated, in, [](Uniform& convolver, const RepeatedFloats& response) {
                convolver.init(256, response.data(), response.size());
            });
        ASSERT_EQ(out, uniform);
        if (2 * layout.format.samples > kHeadTaps) continue;
        const RepeatedFloats agents =
            addedUp<IRAgent>(repeated, in, [](IRAgent& agent, const RepeatedFloats& response) {
                agent.init(256, 12768, response.data(), response.size());
            });
        ASSERT_EQ(out, agents);
    }
}

TEST(ConvolveReverbRepeatedSetUp, StartsFromSilence) {
    for (const RepeatedLayout& repeated : kRepeated) {
        SCOPED_TRACE(repeated.name);
        const sonivex::Layout& layout = *repeated.layout;
        const RepeatedFloats in = burstAndSilence(layout);
        ConvolveReverb used;
        ConvolveReverb fresh;
        used.prepare(layout, layout.width, kRepeatedBlock, repeated.mode);
        const RepeatedFloats once = renderedInBlocks(used, layout, in);
        used.prepare(layout, layout.width, kRepeatedBlock, repeated.mode);
        for (int time = 0; time < 2; ++time) {
            fresh.prepare(layout, layout.width, kRepeatedBlock, repeated.mode);
        }
        const RepeatedFloats out = renderedInBlocks(used, layout, in);
        ASSERT_EQ(out, renderedInBlocks(fresh, layout, in));
        EXPECT_NE(out, once);
    }
}

// Both stages share memory; a set-up of one stage must not take the memory of the other.
TEST(ConvolveReverbRepeatedSetUp, OfOneStageLeavesTheOtherUnchanged) {
    const RepeatedFloats in = burstAndSilence(sonivex::kSurround2);
    ConvolveReverb disturbed;
    ConvolveReverb alone;
    for (ConvolveReverb* const reverb : {&disturbed, &alone}) {
        reverb->prepareToPlay_Kelvo_Surround_2(2, kRepeatedBlock, 1);
        reverb->prepareToPlay_Kelvo_Audio(2, kRepeatedBlock);
    }
    RepeatedFloats out(2 * kRepeatedBlock);
    RepeatedFloats expected(2 * kRepeatedBlock);
    for (std::size_t block = 0; block < 40; ++block) {
        const float* const from = in.data() + 2 * kRepeatedBlock * block;
        if (block == 4 || block == 5) disturbed.prepareToPlay_Kelvo_Audio(2, kRepeatedBlock);
        disturbed.process_Kelvo_Surround_2(from, out.data(), kRepeatedBlock);
        alone.process_Kelvo_Surround_2(from, expected.data(), kRepeatedBlock);
        ASSERT_TRUE(test::sameSignal(out, expected)) << "block " << block;
    }
    disturbed.prepareToPlay_Kelvo_Surround_2(2, kRepeatedBlock, 2);
    disturbed.process_kelvo_audio_(in.data(), out.data(), kRepeatedBlock);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0.0F), 0);
}

// Each set-up has its own block length; a stage that was set up earlier keeps its partitions.
TEST(ConvolveReverbRepeatedSetUp, AllowsDifferentBlockLengthsForTheStages) {
    const RepeatedFloats in = burstAndSilence(sonivex::kSurround2);
    ConvolveReverb mixed;
    ConvolveReverb alone;
    mixed.prepareToPlay_Kelvo_Surround_2(2, kRepeatedBlock, 1);
    alone.prepareToPlay_Kelvo_Surround_2(2, kRepeatedBlock, 1);
    mixed.prepareToPlay_Kelvo_Audio(2, 1000);
    ConvolveReverb audio;
    audio.prepareToPlay_Kelvo_Audio(2, 1000);
    EXPECT_EQ(renderedInBlocks(mixed, sonivex::kSurround2, in),
              renderedInBlocks(alone, sonivex::kSurround2, in));
    EXPECT_EQ(renderedInBlocks(mixed, sonivex::kAudio, in), renderedInBlocks(audio, sonivex::kAudio, in));
}

}  // namespace
