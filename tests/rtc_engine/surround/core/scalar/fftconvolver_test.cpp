#include "fftconvolver.h"

#include <gtest/gtest.h>

#include <cmath>

#include "IRAgent.h"
#include "models/direct_convolution.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"
#include "two_stage_convolver.h"

namespace {

using fftconvolver::FFTConvolver;
using fftconvolver::TwoStageFFTConvolver;
using Floats = std::vector<float>;

// Decaying noise whose last tap is not silent.
Floats room(std::uint64_t seed, std::size_t taps) {
    Floats response = test::noiseFloats(seed, taps);
    for (std::size_t i = 0; i < taps; ++i) {
        response[i] *= std::exp(-5.0F * static_cast<float>(i) / static_cast<float>(taps));
    }
    response.back() = 0.01F;
    return response;
}

template <typename Convolver>
Floats convolved(Convolver& convolver, const Floats& in, std::size_t call) {
    Floats out(in.size(), -1.0F);
    for (std::size_t done = 0; done < in.size(); done += call) {
        const std::size_t n = std::min(call, in.size() - done);
        convolver.process(in.data() + done, out.data() + done, n);
    }
    return out;
}

// The tolerance is relative to the peak of the output. Each product of spectra rounds a few times with an
// error of 2^-24, and the errors of the partitions add up like noise.
void expectNear(const Floats& out, const std::vector<double>& exact, std::size_t partitions = 64) {
    double peak = 0;
    for (const double sample : exact) peak = std::max(peak, std::fabs(sample));
    const double tolerance = 0x1p-24 * peak * (8 + std::sqrt(static_cast<double>(partitions)));
    ASSERT_TRUE(test::closeSignal(out, exact, {.most = tolerance}, {.channels = 1}));
}

TEST(FFTConvolver, EqualsDirectConvolutionForAnyLengthsAndCalls) {
    for (const std::size_t taps : {1U, 2U, 63U, 64U, 65U, 200U, 700U}) {
        const Floats response = room(taps, taps);
        const Floats in = test::noiseFloats(taps + 1, 1500);
        const std::vector<double> exact = model::convolve(in, response);
        for (const std::size_t block : {1U, 3U, 16U, 64U, 256U}) {
            FFTConvolver convolver;
            ASSERT_TRUE(convolver.init(block, response.data(), taps));
            for (const std::size_t call : {1U, 17U, 64U, 100U, 1500U}) {
                SCOPED_TRACE("taps " + std::to_string(taps) + ", block " + std::to_string(block) + ", call " +
                             std::to_string(call));
                convolver.init(block, response.data(), taps);
                expectNear(convolved(convolver, in, call), exact, convolver.partitionCount());
            }
        }
    }
}

TEST(FFTConvolver, AUnitImpulseReturnsTheInputWithoutLatency) {
    Floats response(300, 0.0F);
    response[0] = 1.0F;
    const Floats in = test::noiseFloats(1, 3000);
    for (const std::size_t call : {1U, 240U, 256U, 257U, 3000U}) {
        FFTConvolver convolver;
        convolver.init(256, response.data(), response.size());
        ASSERT_TRUE(test::closeSignal(convolved(convolver, in, call), in, {.most = 2e-7}, {.channels = 1}));
    }
}

TEST(FFTConvolver, SplittingTheInputChangesTheOutputOnlyByRounding) {
    const Floats response = room(2, 1000);
    const Floats in = test::noiseFloats(3, 4800);
    FFTConvolver whole;
    whole.init(256, response.data(), response.size());
    const Floats expected = convolved(whole, in, in.size());
    FFTConvolver split;
    split.init(256, response.data(), response.size());
    expectNear(convolved(split, in, 240), std::vector<double>(expected.begin(), expected.end()));
}

TEST(FFTConvolver, HasAsManyPartitionsAsTheResponseFills) {
    const auto partitions = [](std::size_t taps, std::size_t block) {
        const Floats response = room(4, taps);
        FFTConvolver convolver;
        EXPECT_TRUE(convolver.init(block, response.data(), taps));
        return convolver.partitionCount();
    };
    EXPECT_EQ(partitions(300, 256), 2U);
    EXPECT_EQ(partitions(512, 256), 2U);
    EXPECT_EQ(partitions(513, 256), 3U);
    EXPECT_EQ(partitions(513, 240), 3U);
    EXPECT_EQ(partitions(13000, 256), 51U);
    EXPECT_EQ(partitions(8544, 256), 34U);
    EXPECT_EQ(partitions(8640, 256), 34U);
    EXPECT_EQ(partitions(7000, 256), 28U);
    EXPECT_EQ(partitions(6000, 256), 24U);
    EXPECT_EQ(partitions(5, 1), 5U);
}

TEST(FFTConvolver, DropsSilentTapsAtTheEnd) {
    const Floats in = test::noiseFloats(5, 1000);
    Floats response = room(6, 500);
    FFTConvolver shorter;
    shorter.init(256, response.data(), 500);
    response.resize(600, 0.0F);
    FFTConvolver padded;
    padded.init(256, response.data(), 600);
    EXPECT_EQ(padded.partitionCount(), 2U);
    EXPECT_TRUE(test::sameSignal(convolved(padded, in, 240), convolved(shorter, in, 240), {.channels = 1}));
}

TEST(FFTConvolver, TreatsTapsBelowAMillionthAsSilent) {
    Floats response(300, 1e-6F);
    FFTConvolver convolver;
    convolver.init(256, response.data(), 300);
    EXPECT_EQ(convolver.partitionCount(), 2U);
    for (float& tap : response) tap = std::nextafter(-1e-6F, 0.0F);
    EXPECT_TRUE(convolver.init(256, response.data(), 300));
    EXPECT_EQ(convolver.partitionCount(), 0U);
    EXPECT_EQ(convolved(convolver, test::noiseFloats(7, 100), 100), Floats(100, 0.0F));
}

TEST(FFTConvolver, RejectsABlockSizeOfZero) {
    const Floats response = room(8, 10);
    FFTConvolver convolver;
    ASSERT_TRUE(convolver.init(4, response.data(), 10));
    EXPECT_FALSE(convolver.init(0, response.data(), 10));
    EXPECT_EQ(convolved(convolver, test::noiseFloats(9, 100), 30), Floats(100, 0.0F));
}

TEST(FFTConvolver, OutputsSilenceWithoutAResponse) {
    FFTConvolver convolver;
    EXPECT_EQ(convolved(convolver, test::noiseFloats(10, 100), 30), Floats(100, 0.0F));
    const Floats response = room(11, 10);
    convolver.init(4, response.data(), 10);
    convolver.reset();
    EXPECT_EQ(convolver.partitionLength(), 0U);
    EXPECT_EQ(convolved(convolver, test::noiseFloats(12, 100), 30), Floats(100, 0.0F));
}

TEST(FFTConvolver, StartsFromSilenceWhenLoadedAgain) {
    const Floats first = room(13, 2000);
    const Floats second = room(14, 300);
    const Floats in = test::noiseFloats(15, 1000);
    FFTConvolver fresh;
    fresh.init(64, second.data(), second.size());
    FFTConvolver used;
    used.init(256, first.data(), first.size());
    convolved(used, in, 100);
    used.init(64, second.data(), second.size());
    EXPECT_TRUE(test::sameSignal(convolved(used, in, 100), convolved(fresh, in, 100), {.channels = 1}));
}

TEST(FFTConvolver, TheOutputMayBeTheInput) {
    const Floats response = room(16, 500);
    const Floats in = test::noiseFloats(17, 2000);
    FFTConvolver apart;
    apart.init(256, response.data(), response.size());
    FFTConvolver in_place;
    in_place.init(256, response.data(), response.size());
    Floats samples = in;
    in_place.process(samples.data(), samples.data(), samples.size());
    EXPECT_TRUE(test::sameSignal(samples, convolved(apart, in, in.size()), {.channels = 1}));
}

TEST(TwoStageConvolver, PutsAResponseThatFitsIntoTheHead) {
    const Floats response = room(18, 13000);
    TwoStageFFTConvolver convolver;
    ASSERT_TRUE(convolver.init(256, 12768, response.data(), response.size()));
    EXPECT_EQ(convolver.headPartitionLength(), 256U);
    EXPECT_EQ(convolver.tailPartitionLength(), 16384U);
    EXPECT_EQ(convolver.head().partitionCount(), 51U);
    EXPECT_EQ(convolver.firstTail().partitionCount(), 0U);
    EXPECT_EQ(convolver.tail().partitionCount(), 0U);
}

TEST(TwoStageConvolver, EqualsDirectConvolutionForAResponseThatUsesEveryStage) {
    const Floats response = room(19, 40000);
    Floats in(70000, 0.0F);
    test::Random random(20);
    for (int pulse = 0; pulse < 60; ++pulse) {
        in[static_cast<std::size_t>(random.between(0, 69999))] = static_cast<float>(random.between(-9, 9));
    }
    TwoStageFFTConvolver convolver;
    ASSERT_TRUE(convolver.init(256, 12768, response.data(), response.size()));
    EXPECT_EQ(convolver.head().partitionCount(), 64U);
    EXPECT_EQ(convolver.firstTail().partitionCount(), 64U);
    EXPECT_EQ(convolver.tail().partitionCount(), 1U);
    expectNear(convolved(convolver, in, 240), model::convolve(in, response));
}

TEST(TwoStageConvolver, EqualsDirectConvolutionForAnyLengthsAndCalls) {
    for (const std::size_t taps : {1U, 63U, 64U, 65U, 127U, 128U, 129U, 300U, 1000U}) {
        const Floats response = room(taps, taps);
        const Floats in = test::noiseFloats(taps + 1, 2000);
        const std::vector<double> exact = model::convolve(in, response);
        for (const std::size_t call : {1U, 8U, 33U, 240U, 2000U}) {
            SCOPED_TRACE("taps " + std::to_string(taps) + ", call " + std::to_string(call));
            TwoStageFFTConvolver convolver;
            ASSERT_TRUE(convolver.init(8, 50, response.data(), taps));
            EXPECT_EQ(convolver.tailPartitionLength(), 64U);
            expectNear(convolved(convolver, in, call), exact);
        }
    }
}

TEST(TwoStageConvolver, UsesTheSmallerSizeForTheHead) {
    const Floats response = room(21, 300);
    TwoStageFFTConvolver convolver;
    ASSERT_TRUE(convolver.init(50, 8, response.data(), response.size()));
    EXPECT_EQ(convolver.headPartitionLength(), 8U);
    EXPECT_EQ(convolver.tailPartitionLength(), 64U);
    const Floats in = test::noiseFloats(22, 500);
    expectNear(convolved(convolver, in, 100), model::convolve(in, response));
}

TEST(TwoStageConvolver, OutputsSilenceForASizeOfZeroOrASilentResponse) {
    const Floats response = room(23, 300);
    const Floats quiet(300, 1e-7F);
    const Floats in = test::noiseFloats(24, 500);
    TwoStageFFTConvolver convolver;
    ASSERT_TRUE(convolver.init(8, 16, response.data(), response.size()));
    EXPECT_FALSE(convolver.init(0, 16, response.data(), response.size()));
    EXPECT_EQ(convolved(convolver, in, 100), Floats(500, 0.0F));
    EXPECT_FALSE(convolver.init(8, 0, response.data(), response.size()));
    EXPECT_EQ(convolved(convolver, in, 100), Floats(500, 0.0F));
    EXPECT_TRUE(convolver.init(8, 16, quiet.data(), quiet.size()));
    EXPECT_EQ(convolver.headPartitionLength(), 0U);
    EXPECT_EQ(convolved(convolver, in, 100), Floats(500, 0.0F));
}

TEST(IRAgent, ConvolvesAndOverwritesItsOutput) {
    const Floats response = room(25, 600);
    const Floats in = test::noiseFloats(26, 480);
    IRAgent agent;
    Floats out(480, 5.0F);
    agent.process(in.data(), out.data(), 480);
    EXPECT_EQ(out, Floats(480, 0.0F));
    ASSERT_TRUE(agent.init(256, 12768, response.data(), response.size()));
    agent.process(in.data(), out.data(), 240);
    agent.process(in.data() + 240, out.data() + 240, 240);
    expectNear(out, model::convolve(in, response));
    EXPECT_FALSE(agent.init(0, 0, response.data(), response.size()));
}

}  // namespace
