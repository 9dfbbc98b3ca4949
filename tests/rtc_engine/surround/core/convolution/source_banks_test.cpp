// Compares stages with any mixture of sources with one scalar convolver per pair of source and ear.
#include "source_banks.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fftconvolver.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

using sonivex::kNoAgent;
using sonivex::Source;
using sonivex::SourceBanks;
using StageFloats = std::vector<float>;

constexpr std::size_t kStageBlock = 16;
constexpr std::size_t kStageWidth = 6;

std::vector<sonivex::Taps> tapsOfResponses(const std::vector<StageFloats>& responses) {
    std::vector<sonivex::Taps> taps;
    for (const StageFloats& response : responses) taps.push_back({response.data(), response.size()});
    return taps;
}

SourceBanks builtBanks(const std::vector<Source>& sources, const std::vector<StageFloats>& responses) {
    const std::vector<sonivex::Taps> taps = tapsOfResponses(responses);
    SourceBanks banks;
    banks.build(sources, taps,
                std::make_shared<sonivex::ConvolutionMemory>(
                    kStageBlock, SourceBanks::bytesOf(sources, taps, kStageBlock)));
    return banks;
}

// Responses by agent number. Each agent in `alike`, an even number, shares its response with the next one.
std::vector<StageFloats> responsesOfAgents(std::size_t agents, const std::vector<std::size_t>& alike) {
    std::vector<StageFloats> responses;
    for (std::size_t i = 0; i < agents; ++i) {
        responses.push_back(test::noiseFloats(80 + i, 20 + 13 * i));
        responses.back().back() = 0.5F;
    }
    for (const std::size_t agent : alike) responses[agent + 1] = responses[agent];
    return responses;
}

void expectScalarSums(const std::vector<Source>& sources, const std::vector<StageFloats>& responses,
                      std::size_t width = kStageWidth) {
    SourceBanks banks = builtBanks(sources, responses);
    std::vector<fftconvolver::FFTConvolver> scalar(responses.size());
    for (std::size_t i = 0; i < responses.size(); ++i) {
        scalar[i].init(kStageBlock, responses[i].data(), responses[i].size());
    }
    test::Random random(3);
    for (int render = 0; render < 60; ++render) {
        const auto frames = static_cast<std::size_t>(random.between(1, 40));
        const auto calls = static_cast<std::size_t>(random.between(1, 3));
        const StageFloats in = test::noiseFloats(random.bits(), width * frames * calls);
        StageFloats expected(2 * frames * calls, 0.0F);
        for (std::size_t call = 0; call < calls; ++call) {
            for (const Source& source : sources) {
                const int agents[] = {source.left_agent, source.right_agent};
                for (std::size_t ear = 0; ear < 2; ++ear) {
                    if (agents[ear] == kNoAgent) continue;
                    StageFloats plane(frames);
                    for (std::size_t i = 0; i < frames; ++i) {
                        plane[i] = in[(call * frames + i) * width + source.plane];
                    }
                    scalar[static_cast<std::size_t>(agents[ear])].process(plane.data(), plane.data(), frames);
                    for (std::size_t i = 0; i < frames; ++i)
                        expected[2 * (call * frames + i) + ear] += plane[i];
                }
            }
        }
        StageFloats ears(2 * frames * calls, 9.0F);
        banks.render(in.data(), width, frames, calls, ears.data());
        ASSERT_TRUE(test::sameSignal(ears, expected)) << calls << " calls of " << frames;
    }
}

// The output fits in place, because a frame of input has at least two samples.
TEST(SourceBanks, MayOverwriteTheirInput) {
    for (const std::size_t width : {2U, 6U}) {
        const std::vector<Source> sources = {{0, 0, 1}, {1, 2, 3}};
        const std::vector<StageFloats> responses = responsesOfAgents(4, {});
        SourceBanks apart = builtBanks(sources, responses);
        SourceBanks in_place = builtBanks(sources, responses);
        test::Random random(width);
        for (int render = 0; render < 30; ++render) {
            const auto frames = static_cast<std::size_t>(random.between(1, 70));
            const auto calls = static_cast<std::size_t>(random.between(1, 4));
            StageFloats samples = test::noiseFloats(random.bits(), width * frames * calls);
            StageFloats expected(2 * frames * calls);
            apart.render(samples.data(), width, frames, calls, expected.data());
            in_place.render(samples.data(), width, frames, calls, samples.data());
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), samples.begin()))
                << calls << " calls of " << frames;
        }
    }
}

// A source with equal responses at both ears may be first or second of a pair, or the odd one at the end.
TEST(SourceBanks, KeepTheOrderOfSumsForSourcesWithEqualEars) {
    const std::vector<Source> five = {{0, 0, 1}, {3, 2, 3}, {1, 4, 5}, {5, 6, 7}, {2, 8, 9}};
    for (const std::vector<std::size_t>& alike :
         {std::vector<std::size_t>{}, {0}, {2}, {4}, {8}, {0, 2}, {2, 4}, {0, 2, 4, 6, 8}}) {
        SCOPED_TRACE("alike: " + ::testing::PrintToString(alike));
        expectScalarSums(five, responsesOfAgents(10, alike));
    }
}

// A source with equal responses is convolved once for both ears, which is cheap only in a bank of its own.
TEST(SourceBanks, PutASourceWithEqualEarsIntoItsOwnBank) {
    const std::vector<Source> one = {{0, 0, 1}};
    const std::vector<Source> other = {{1, 2, 3}};
    const std::vector<Source> both = {{0, 0, 1}, {1, 2, 3}};
    const auto bytes_of = [](const std::vector<Source>& sources, const std::vector<StageFloats>& responses) {
        return SourceBanks::bytesOf(sources, tapsOfResponses(responses), kStageBlock);
    };
    for (const std::size_t alike : {0U, 2U}) {
        const std::vector<StageFloats> responses = responsesOfAgents(4, {alike});
        EXPECT_EQ(bytes_of(both, responses), bytes_of(one, responses) + bytes_of(other, responses));
    }
    EXPECT_LT(bytes_of(other, responsesOfAgents(4, {2})), bytes_of(other, responsesOfAgents(4, {})));
}

TEST(SourceBanks, RenderASingleSource) {
    expectScalarSums({{4, 1, 0}}, responsesOfAgents(2, {}));
    expectScalarSums({{4, 0, 1}}, responsesOfAgents(2, {0}));
}

// Two adjacent channels are read together, unless the sources have them in reverse order.
TEST(SourceBanks, AcceptSourcesInAnyOrderOfTheChannels) {
    expectScalarSums({{0, 0, 1}, {1, 2, 3}}, responsesOfAgents(4, {}), 2);
    expectScalarSums({{1, 0, 1}, {0, 2, 3}}, responsesOfAgents(4, {}), 2);
    expectScalarSums({{1, 0, kNoAgent}, {0, kNoAgent, 1}}, responsesOfAgents(2, {}), 2);
}

TEST(SourceBanks, AcceptASecondPairOnOtherChannels) {
    expectScalarSums({{2, 0, kNoAgent}, {1, kNoAgent, 3}, {0, 1, kNoAgent}, {3, kNoAgent, 2}},
                     responsesOfAgents(4, {}));
}

TEST(SourceBanks, KeepTheSidesApartForSourcesOfOneEarEach) {
    expectScalarSums({{2, 0, kNoAgent}, {1, kNoAgent, 1}}, responsesOfAgents(2, {}));
    expectScalarSums({{2, 0, kNoAgent}, {1, kNoAgent, 3}, {2, 1, kNoAgent}, {1, kNoAgent, 2}},
                     responsesOfAgents(4, {}));
}

// A response that both sides have in common is stored once.
TEST(SourceBanks, ShareAResponseBetweenEqualSides) {
    const std::vector<Source> sides = {{2, 0, kNoAgent}, {1, kNoAgent, 1}};
    const std::vector<StageFloats> alike = responsesOfAgents(2, {0});
    expectScalarSums(sides, alike);
    std::vector<StageFloats> different = alike;
    different[1][3] += 0.5F;
    expectScalarSums(sides, different);
    const std::size_t bytes = SourceBanks::bytesOf(sides, tapsOfResponses(alike), kStageBlock);
    EXPECT_LT(bytes, SourceBanks::bytesOf(sides, tapsOfResponses(different), kStageBlock));
    expectScalarSums({{2, 0, kNoAgent}, {1, kNoAgent, 1}, {2, 2, kNoAgent}, {1, kNoAgent, 3}},
                     responsesOfAgents(4, {0, 2}));
}

// Like a scalar convolver, a bank drops the inaudible end of a response.
TEST(SourceBanks, RenderResponsesThatEndInSilenceOrAreSilent) {
    std::vector<StageFloats> responses = responsesOfAgents(4, {});
    responses[0].resize(500, 1e-7F);
    responses[1].assign(100, 0.0F);
    expectScalarSums({{0, 0, 1}, {1, 2, 3}}, responses);
    responses[0].assign(100, 1e-7F);
    expectScalarSums({{0, 0, 1}, {1, 2, 3}}, responses);
}

TEST(SourceBanks, StartFromSilenceWhenRebuilt) {
    const std::vector<Source> sources = {{0, 0, 1}};
    const std::vector<StageFloats> responses = responsesOfAgents(2, {});
    const std::vector<sonivex::Taps> taps = tapsOfResponses(responses);
    SourceBanks rebuilt = builtBanks(sources, responses);
    SourceBanks fresh = builtBanks(sources, responses);
    const StageFloats in = test::noiseFloats(1, kStageWidth * 25);
    StageFloats out(2 * 25);
    rebuilt.render(in.data(), kStageWidth, 25, 1, out.data());
    rebuilt.build(sources, taps,
                  std::make_shared<sonivex::ConvolutionMemory>(
                      kStageBlock, SourceBanks::bytesOf(sources, taps, kStageBlock)));
    StageFloats expected(2 * 25);
    rebuilt.render(in.data(), kStageWidth, 25, 1, out.data());
    fresh.render(in.data(), kStageWidth, 25, 1, expected.data());
    EXPECT_TRUE(test::sameSignal(out, expected));
}

// A build without enough memory throws, but the previous banks still render.
TEST(SourceBanks, KeepThePreviousBanksWithoutRoom) {
    const std::vector<Source> sources = {{0, 0, 1}};
    const std::vector<StageFloats> responses = responsesOfAgents(2, {});
    const std::vector<sonivex::Taps> taps = tapsOfResponses(responses);
    SourceBanks kept = builtBanks(sources, responses);
    SourceBanks alone = builtBanks(sources, responses);
    const std::size_t bytes = SourceBanks::bytesOf(sources, taps, kStageBlock);
    EXPECT_THROW(
        kept.build(sources, taps, std::make_shared<sonivex::ConvolutionMemory>(kStageBlock, bytes - 64)),
        std::bad_alloc);
    const StageFloats in = test::noiseFloats(2, kStageWidth * 70);
    StageFloats out(2 * 70);
    StageFloats expected(2 * 70);
    kept.render(in.data(), kStageWidth, 35, 2, out.data());
    alone.render(in.data(), kStageWidth, 35, 2, expected.data());
    EXPECT_TRUE(test::sameSignal(out, expected));
}

}  // namespace
