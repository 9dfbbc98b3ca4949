/* Banks against one scalar convolver for each response, bit for bit but for the sign of zeros, at every
 * vector width. */
#include "convolution_bank.h"

#include <gtest/gtest.h>

#include <cstring>

#include "../../../reference/scalar_convolver.h"
#include "support/each_vector_target.h"
#include "support/signals.h"

namespace {

using fftconvolver::BankShape;
using fftconvolver::ConvolutionBank;
using fftconvolver::ConvolutionWorkspace;
using fftconvolver::Ears;
using fftconvolver::Taps;
using Floats = std::vector<float>;
using Mixing = ConvolutionBank::Mixing;

constexpr BankShape kShapes[] = {{.channels = 1, .rows = 1},
                                 {.channels = 1, .rows = 2},
                                 {.channels = 2, .rows = 1, .ears = Ears::kChannels},
                                 {.channels = 2, .rows = 2},
                                 {.channels = 2, .rows = 2, .ears = Ears::kChannels}};

/* Sound and silence in turn, in stretches that are shorter and longer than a response. */
void silenceStretches(Floats& interleaved, std::size_t longest, std::uint64_t seed) {
    test::Random random(seed);
    std::size_t i = 0;
    while (i < interleaved.size()) {
        i += static_cast<std::size_t>(random.between(1, static_cast<int>(longest)));
        const std::size_t end =
            std::min(interleaved.size(),
                     i + static_cast<std::size_t>(random.between(1, static_cast<int>(3 * longest))));
        for (; i < end; ++i) interleaved[i] = random.between(0, 1) == 0 ? 0.0F : -0.0F;
    }
}

/* A bank, and as many scalar convolvers as it has responses. */
class Pair {
  public:
    Pair(const BankShape& shape, std::size_t block_frames, const std::vector<Floats>& responses)
        : shape_(shape), scalar_(responses.size()), workspace_(block_frames, shape) {
        std::vector<Taps> taps;
        std::size_t partitions = 1;
        for (std::size_t i = 0; i < responses.size(); ++i) {
            taps.push_back({responses[i].data(), responses[i].size()});
            scalar_[i].init(block_frames, responses[i].data(), responses[i].size());
            partitions = std::max(partitions, (responses[i].size() + block_frames - 1) / block_frames);
        }
        bank_ = std::make_unique<ConvolutionBank>(shape, taps.data(), partitions, workspace_);
    }

    /* @param in [frames][stride], of which the channels are the first ones. */
    void expectEqual(const float* in, std::size_t stride, std::size_t frames, Mixing mixing) {
        Floats ears = test::noiseFloats(frames, frames * shape_.earCount());
        for (float& ear : ears) ear += 2.0F;
        Floats expected = ears;
        if (mixing == Mixing::kSet) expected.assign(expected.size(), 0.0F);
        addScalar(in, stride, frames, expected);
        bank_->process({.first = {in, in + shape_.channels - 1}, .stride = stride}, ears.data(), frames,
                       mixing, workspace_);
        ASSERT_EQ(ears, expected);
    }

  private:
    void addScalar(const float* in, std::size_t stride, std::size_t frames, Floats& ears) {
        const std::size_t outer = shape_.ears == Ears::kRows ? shape_.channels : shape_.rows;
        const std::size_t inner = shape_.earCount();
        for (std::size_t term = 0; term < outer; ++term) {
            for (std::size_t ear = 0; ear < inner; ++ear) {
                const std::size_t row = shape_.ears == Ears::kRows ? ear : term;
                const std::size_t channel = shape_.ears == Ears::kRows ? term : ear;
                Floats plane(frames);
                for (std::size_t i = 0; i < frames; ++i) plane[i] = in[i * stride + channel];
                Floats out(frames);
                scalar_[row * shape_.channels + channel].process(plane.data(), out.data(), frames);
                for (std::size_t i = 0; i < frames; ++i) ears[i * inner + ear] += out[i];
            }
        }
    }

    BankShape shape_;
    std::vector<model::ScalarConvolver> scalar_;
    ConvolutionWorkspace workspace_;
    std::unique_ptr<ConvolutionBank> bank_;
};

std::vector<Floats> responsesFor(const BankShape& shape, std::size_t longest) {
    std::vector<Floats> responses;
    for (std::size_t i = 0; i < shape.responses(); ++i) {
        /* Not all of the same length. */
        responses.push_back(test::noiseFloats(50 + i, longest > 7 * i ? longest - 7 * i : 1));
        responses.back().back() = 0.25F;
    }
    return responses;
}

template <typename Check>
void forEveryShape(Check check) {
    test::forEachVectorTarget([&] {
        for (const BankShape& shape : kShapes) {
            SCOPED_TRACE(std::to_string(shape.channels) + " channels, " + std::to_string(shape.rows) +
                         " rows");
            check(shape);
        }
    });
}

TEST(ConvolutionBank, HasTheBitsOfScalarConvolversForAnyLengths) {
    forEveryShape([](const BankShape& shape) {
        for (const std::size_t block : {1U, 2U, 4U, 8U, 16U, 64U}) {
            for (const std::size_t taps : {std::size_t{1}, block, block + 1, 3 * block + 1, 7 * block}) {
                SCOPED_TRACE("block " + std::to_string(block) + ", taps " + std::to_string(taps));
                Pair pair(shape, block, responsesFor(shape, taps));
                test::Random random(block + taps);
                const Floats in = test::noiseFloats(taps, 3 * 40 * block);
                std::size_t done = 0;
                while (done < 40 * block) {
                    const auto n =
                        std::min(40 * block - done, static_cast<std::size_t>(random.between(
                                                        1, static_cast<int>(2 * block + block / 2 + 1))));
                    pair.expectEqual(in.data() + 3 * done, 3, n,
                                     random.between(0, 1) == 0 ? Mixing::kSet : Mixing::kAdd);
                    if (::testing::Test::HasFatalFailure()) return;
                    done += n;
                }
            }
        }
    });
}

TEST(ConvolutionBank, HasTheBitsOfScalarConvolversAtSurroundsBlocks) {
    forEveryShape([](const BankShape& shape) {
        constexpr std::size_t kCall = 240;
        Pair pair(shape, 256, responsesFor(shape, 2000));
        const Floats in = test::noiseFloats(9, 2 * kCall * 40);
        for (std::size_t call = 0; call < 40; ++call) {
            pair.expectEqual(in.data() + 2 * kCall * call, 2, kCall, Mixing::kAdd);
            if (::testing::Test::HasFatalFailure()) return;
        }
    });
}

TEST(ConvolutionBank, SilenceThatComesAndGoesDoesNotChangeABit) {
    forEveryShape([](const BankShape& shape) {
        constexpr std::size_t kBlock = 16;
        constexpr std::size_t kTaps = 40;
        for (const std::size_t call : {1U, 7U, 14U, 16U, 33U}) {
            SCOPED_TRACE("calls of " + std::to_string(call));
            const Mixing mixing = call % 2 == 0 ? Mixing::kSet : Mixing::kAdd;
            Pair pair(shape, kBlock, responsesFor(shape, kTaps));
            Floats in = test::noiseFloats(call, 2 * 3000);
            silenceStretches(in, 2 * (kTaps + kBlock), call);
            for (std::size_t done = 0; done + call <= 3000; done += call) {
                pair.expectEqual(in.data() + 2 * done, 2, call, mixing);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    });
}

TEST(ConvolutionBank, OneSilentChannelDoesNotSilenceTheOther) {
    constexpr BankShape kPair = {.channels = 2, .rows = 2};
    for (const std::size_t silent : {0U, 1U}) {
        Pair pair(kPair, 16, responsesFor(kPair, 40));
        Floats in = test::noiseFloats(silent, 2 * 2000);
        for (std::size_t i = silent; i < in.size(); i += 2) in[i] = 0.0F;
        for (std::size_t done = 0; done < 2000; done += 20)
            pair.expectEqual(in.data() + 2 * done, 2, 20, Mixing::kAdd);
    }
}

TEST(ConvolutionBank, SilenceIsExactOnceTheResponseHasEnded) {
    constexpr BankShape kPair = {.channels = 2, .rows = 2};
    constexpr std::size_t kTaps = 8000;
    constexpr std::size_t kCall = 240;
    const std::vector<Floats> responses = responsesFor(kPair, kTaps);
    std::vector<Taps> taps;
    for (const Floats& response : responses) taps.push_back({response.data(), response.size()});
    ConvolutionWorkspace workspace(256, kPair);
    ConvolutionBank bank(kPair, taps.data(), 32, workspace);
    Floats ears(2 * kCall);
    const auto process = [&](const Floats& in) {
        ears.assign(ears.size(), 0.0F);
        bank.process({.first = {in.data(), in.data() + 1}, .stride = 2}, ears.data(), kCall, Mixing::kAdd,
                     workspace);
        return std::count(ears.begin(), ears.end(), 0.0F);
    };
    const auto all_silent = static_cast<std::ptrdiff_t>(ears.size());
    const Floats silence(2 * kCall, 0.0F);
    process(test::noiseFloats(1, 2 * kCall));
    std::size_t calls = 0;
    while (process(silence) != all_silent) ++calls;
    EXPECT_GE(calls * kCall, kTaps - kCall);
    EXPECT_LE(calls * kCall, kTaps + 3 * 256);
}

TEST(ConvolutionBank, InputMayBeOverwrittenByOutput) {
    const Floats response = test::noiseFloats(3, 100);
    const Taps taps = {response.data(), response.size()};
    ConvolutionWorkspace workspace(16, BankShape{});
    ConvolutionBank apart(BankShape{}, &taps, 7, workspace);
    ConvolutionBank in_place(BankShape{}, &taps, 7, workspace);
    Floats samples = test::noiseFloats(4, 1000);
    Floats expected(1000);
    apart.process({.first = {samples.data()}, .stride = 1}, expected.data(), 1000, Mixing::kSet, workspace);
    in_place.process({.first = {samples.data()}, .stride = 1}, samples.data(), 1000, Mixing::kSet, workspace);
    EXPECT_EQ(samples, expected);
}

}  // namespace
