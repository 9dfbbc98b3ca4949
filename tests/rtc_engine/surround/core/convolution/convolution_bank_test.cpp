// Compares banks with one scalar convolver per response at every vector width. All bits must be equal except
// the sign of zeros.
#include "convolution_bank.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fftconvolver.h"
#include "support/each_vector_target.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

using fftconvolver::FFTConvolver;
using sonivex::Arena;
using sonivex::BankShape;
using sonivex::ConvolutionBank;
using sonivex::ConvolutionWorkspace;
using sonivex::Ears;
using sonivex::Step;
using sonivex::Steps;
using sonivex::Taps;
using Floats = std::vector<float>;

constexpr BankShape kShapes[] = {{.channels = 1, .rows = 1, .ears = Ears::kBoth},
                                 {.channels = 1, .rows = 2, .ears = Ears::kRows},
                                 {.channels = 2, .rows = 1, .ears = Ears::kChannels},
                                 {.channels = 2, .rows = 1, .ears = Ears::kChannels, .shares_response = true},
                                 {.channels = 2, .rows = 2, .ears = Ears::kRows},
                                 {.channels = 2, .rows = 2, .ears = Ears::kChannels}};
constexpr BankShape kTwoSources = {.channels = 2, .rows = 2, .ears = Ears::kRows};

// Inserts stretches of silence, with stretches of sound between them, shorter and longer than a response.
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

std::size_t partitionsFor(const std::vector<Floats>& responses, std::size_t block_frames) {
    std::size_t partitions = 1;
    for (const Floats& response : responses) {
        partitions = std::max(partitions, (response.size() + block_frames - 1) / block_frames);
    }
    return partitions;
}

// A bank with its own memory and its position within the current block.
class OwnedBank {
  public:
    OwnedBank(const BankShape& shape, std::size_t block_frames, const std::vector<Floats>& responses)
        : block_frames_(block_frames),
          partitions_(partitionsFor(responses, block_frames)),
          arena_(ConvolutionWorkspace::bytesOf(block_frames) +
                 ConvolutionBank::bytesOf(shape, partitions_, block_frames)),
          workspace_(block_frames, arena_),
          bank_(shape, tapsOf(responses).data(), partitions_, workspace_, arena_) {}

    // @param in    [calls * frames][stride] from `first` on; each frame begins with the bank's channels
    // @param ears  [calls * frames][2]; the output is added to it
    void render(const Floats& in, std::size_t first, std::size_t stride, std::size_t frames,
                std::size_t calls, Floats& ears) {
        Steps steps(block_frames_, fill_, frames, calls);
        const float* from = in.data() + first * stride;
        float* to = ears.data();
        while (steps.areLeft()) {
            const Step step = steps.next();
            bank_.render(step, {.first = {from, from + 1}, .stride = stride}, workspace_);
            bank_.addOutputs(step.frames(), to);
            fill_ = step.lastFill();
            from += step.frames() * stride;
            to += 2 * step.frames();
        }
    }

    std::size_t room() const { return arena_.room(); }
    const ConvolutionBank& bank() const { return bank_; }

  private:
    static std::vector<Taps> tapsOf(const std::vector<Floats>& responses) {
        std::vector<Taps> taps;
        for (const Floats& response : responses) taps.push_back({response.data(), response.size()});
        return taps;
    }

    std::size_t block_frames_;
    std::size_t partitions_;
    Arena arena_;
    ConvolutionWorkspace workspace_;
    ConvolutionBank bank_;
    std::size_t fill_ = 0;
};

// A bank and one scalar convolver per output.
class Pair {
  public:
    Pair(const BankShape& shape, std::size_t block_frames, const std::vector<Floats>& responses)
        : shape_(shape), scalar_(shape.outputs()), bank_(shape, block_frames, responses) {
        for (std::size_t i = 0; i < scalar_.size(); ++i) {
            const Floats& response = responses[shape.shares_response ? 0 : i];
            scalar_[i].init(block_frames, response.data(), response.size());
        }
    }

    // Renders calls from frame `first` of the input on. The output must be added to the previous content of
    // the ears.
    void expectEqual(const Floats& in, std::size_t first, std::size_t stride, std::size_t frames,
                     std::size_t calls) {
        Floats ears = test::noiseFloats(frames, 2 * frames * calls);
        for (float& ear : ears) ear += 2.0F;
        Floats expected = ears;
        for (std::size_t call = 0; call < calls; ++call) {
            addScalar(in, first + call * frames, stride, frames, expected.data() + 2 * call * frames);
        }
        bank_.render(in, first, stride, frames, calls, ears);
        ASSERT_TRUE(test::sameSignal(ears, expected));
    }

  private:
    // An ear sums its outputs over the channels if the ears are rows, and over the rows if they are channels.
    void addScalar(const Floats& in, std::size_t first, std::size_t stride, std::size_t frames, float* ears) {
        const bool are_channels = shape_.ears == Ears::kChannels;
        for (std::size_t term = 0; term < (are_channels ? shape_.rows : shape_.channels); ++term) {
            for (std::size_t ear = 0; ear < (are_channels ? shape_.channels : shape_.rows); ++ear) {
                const std::size_t row = are_channels ? term : ear;
                const std::size_t channel = are_channels ? ear : term;
                Floats plane(frames);
                for (std::size_t i = 0; i < frames; ++i) plane[i] = in[(first + i) * stride + channel];
                scalar_[row * shape_.channels + channel].process(plane.data(), plane.data(), frames);
                for (std::size_t i = 0; i < frames; ++i) {
                    ears[2 * i + ear] += plane[i];
                    if (shape_.ears == Ears::kBoth) ears[2 * i + 1] += plane[i];
                }
            }
        }
    }

    BankShape shape_;
    std::vector<FFTConvolver> scalar_;
    OwnedBank bank_;
};

std::vector<Floats> responsesFor(const BankShape& shape, std::size_t longest) {
    std::vector<Floats> responses;
    for (std::size_t i = 0; i < shape.responses(); ++i) {
        // The responses differ in length.
        responses.push_back(test::noiseFloats(50 + i, longest > 7 * i ? longest - 7 * i : 1));
        responses.back().back() = 0.25F;
    }
    return responses;
}

// Renders calls of random length, some of them together, up to the end of the input.
void expectEqualInRandomCalls(Pair& pair, const Floats& in, std::size_t stride, std::size_t longest,
                              std::uint64_t seed) {
    test::Random random(seed);
    const std::size_t total = in.size() / stride;
    std::size_t done = 0;
    while (done < total) {
        const auto calls = static_cast<std::size_t>(random.between(1, 4));
        const auto wanted = static_cast<std::size_t>(random.between(1, static_cast<int>(longest)));
        const std::size_t frames = std::min(wanted, (total - done) / calls);
        if (frames == 0) break;
        SCOPED_TRACE(std::to_string(calls) + " calls of " + std::to_string(frames));
        pair.expectEqual(in, done, stride, frames, calls);
        if (::testing::Test::HasFatalFailure()) return;
        done += calls * frames;
    }
}

template <typename Check>
void forEveryShape(Check check) {
    test::forEachVectorTarget([&] {
        for (const BankShape& shape : kShapes) {
            SCOPED_TRACE(std::to_string(shape.channels) + " channels, " + std::to_string(shape.rows) +
                         " rows");
            check(shape);
            if (::testing::Test::HasFatalFailure()) return;
        }
    });
}

TEST(ConvolutionBank, EqualsScalarConvolversToTheBitForAnyLengths) {
    forEveryShape([](const BankShape& shape) {
        for (const std::size_t block : {1U, 2U, 4U, 8U, 16U, 32U, 64U}) {
            for (const std::size_t taps : {std::size_t{1}, block, block + 1, 3 * block + 1, 7 * block}) {
                SCOPED_TRACE("block " + std::to_string(block) + ", taps " + std::to_string(taps));
                Pair pair(shape, block, responsesFor(shape, taps));
                const Floats in = test::noiseFloats(taps, 3 * 40 * block);
                expectEqualInRandomCalls(pair, in, 3, 2 * block + block / 2 + 1, block + taps);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    });
}

TEST(ConvolutionBank, EqualsScalarConvolversToTheBitForTheBlocksOfSurround) {
    forEveryShape([](const BankShape& shape) {
        constexpr std::size_t kCall = 240;
        for (const std::size_t calls : {1U, 2U, 5U}) {
            SCOPED_TRACE(std::to_string(calls) + " calls at once");
            Pair pair(shape, 256, responsesFor(shape, 2000));
            const Floats in = test::noiseFloats(9, 2 * kCall * 40);
            for (std::size_t call = 0; call < 40; call += calls) {
                pair.expectEqual(in, kCall * call, 2, kCall, calls);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
        Pair pair(shape, 256, responsesFor(shape, 2000));
        expectEqualInRandomCalls(pair, test::noiseFloats(10, 2 * 9600), 2, 600, 11);
    });
}

TEST(ConvolutionBank, EqualsScalarConvolversToTheBitThroughStretchesOfSilence) {
    forEveryShape([](const BankShape& shape) {
        constexpr std::size_t kBlock = 16;
        constexpr std::size_t kTaps = 40;
        for (const std::size_t call : {1U, 7U, 14U, 16U, 33U}) {
            for (const std::size_t calls : {1U, 2U, 3U}) {
                SCOPED_TRACE(std::to_string(calls) + " calls of " + std::to_string(call));
                Pair pair(shape, kBlock, responsesFor(shape, kTaps));
                Floats in = test::noiseFloats(call, 2 * 3000);
                silenceStretches(in, 2 * (kTaps + kBlock), call);
                for (std::size_t done = 0; done + call * calls <= 3000; done += call * calls) {
                    pair.expectEqual(in, done, 2, call, calls);
                    if (::testing::Test::HasFatalFailure()) return;
                }
            }
        }
        for (const std::size_t block : {1U, 4U, 256U}) {
            SCOPED_TRACE("block " + std::to_string(block));
            const std::size_t taps = 3 * block;
            Pair pair(shape, block, responsesFor(shape, taps));
            Floats in = test::noiseFloats(block, 2 * 40 * block);
            silenceStretches(in, 2 * (taps + block), block);
            expectEqualInRandomCalls(pair, in, 2, 2 * block, block);
            if (::testing::Test::HasFatalFailure()) return;
        }
    });
}

TEST(ConvolutionBank, OneSilentChannelDoesNotSilenceTheOther) {
    for (const std::size_t silent : {0U, 1U}) {
        for (const std::size_t calls : {1U, 2U}) {
            Pair pair(kTwoSources, 16, responsesFor(kTwoSources, 40));
            Floats in = test::noiseFloats(silent, 2 * 2000);
            for (std::size_t i = silent; i < in.size(); i += 2) in[i] = 0.0F;
            for (std::size_t done = 0; done < 2000; done += 20 * calls)
                pair.expectEqual(in, done, 2, 20, calls);
        }
    }
}

TEST(ConvolutionBank, OutputsExactSilenceAfterTheEndOfTheResponse) {
    constexpr std::size_t kTaps = 8000;
    constexpr std::size_t kCall = 240;
    OwnedBank bank(kTwoSources, 256, responsesFor(kTwoSources, kTaps));
    EXPECT_EQ(bank.bank().partitions(), 32U);
    Floats ears(2 * kCall);
    const auto silent_samples = [&](const Floats& in) {
        ears.assign(ears.size(), 0.0F);
        bank.render(in, 0, 2, kCall, 1, ears);
        return std::count(ears.begin(), ears.end(), 0.0F);
    };
    const auto all_silent = static_cast<std::ptrdiff_t>(ears.size());
    const Floats silence(2 * kCall, 0.0F);
    silent_samples(test::noiseFloats(1, 2 * kCall));
    std::size_t calls = 0;
    while (calls < 100 && silent_samples(silence) != all_silent) ++calls;
    EXPECT_GE(calls * kCall, kTaps - kCall);
    EXPECT_LE(calls * kCall, kTaps + 3 * 256);
}

TEST(ConvolutionBank, ReadsOnlyItsOwnChannelsOfTheInput) {
    for (const BankShape& shape : kShapes) {
        const std::vector<Floats> responses = responsesFor(shape, 100);
        OwnedBank packed(shape, 16, responses);
        OwnedBank spread(shape, 16, responses);
        const Floats in = test::noiseFloats(4, shape.channels * 1000);
        Floats wide = test::noiseFloats(5, 8 * 1000);
        for (std::size_t i = 0; i < 1000; ++i) {
            for (std::size_t channel = 0; channel < shape.channels; ++channel) {
                wide[8 * i + channel] = in[i * shape.channels + channel];
            }
        }
        Floats expected(2 * 1000, 0.0F);
        Floats ears(2 * 1000, 0.0F);
        packed.render(in, 0, shape.channels, 100, 10, expected);
        spread.render(wide, 0, 8, 100, 10, ears);
        EXPECT_TRUE(test::sameSignal(ears, expected));
    }
}

// Arenas too small for pages of their own have exactly the requested room.
TEST(ConvolutionBank, TakesExactlyTheStatedBytesFromAnArena) {
    for (const BankShape& shape : kShapes) {
        for (const std::size_t block : {1U, 2U, 4U, 8U, 16U, 32U, 64U}) {
            for (const std::size_t taps : {std::size_t{1}, block, 3 * block + 1}) {
                const OwnedBank bank(shape, block, responsesFor(shape, taps));
                EXPECT_EQ(bank.room(), 0U) << "block " << block << ", taps " << taps;
            }
        }
    }
}

TEST(ConvolutionBank, RejectsAnArenaWithoutRoom) {
    const std::vector<Floats> responses = responsesFor(kTwoSources, 100);
    std::vector<Taps> taps;
    for (const Floats& response : responses) taps.push_back({response.data(), response.size()});
    const std::size_t workspace_bytes = ConvolutionWorkspace::bytesOf(16);
    const std::size_t bank_bytes = ConvolutionBank::bytesOf(kTwoSources, 7, 16);
    for (const std::size_t missing : {Arena::kAlignment, bank_bytes / 2, bank_bytes}) {
        Arena arena(workspace_bytes + bank_bytes - missing);
        ConvolutionWorkspace workspace(16, arena);
        EXPECT_THROW(ConvolutionBank(kTwoSources, taps.data(), 7, workspace, arena), std::bad_alloc);
    }
    Arena small(workspace_bytes - Arena::kAlignment);
    EXPECT_THROW(ConvolutionWorkspace(16, small), std::bad_alloc);
}

}  // namespace
