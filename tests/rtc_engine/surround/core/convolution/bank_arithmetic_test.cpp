// Compares the multiply-accumulate over tiles with the scalar one over whole spectra, bit for bit, at every
// vector width.
#include "bank_arithmetic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

#include "spectrum_arithmetic.h"
#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using fftconvolver::Buffer;
using fftconvolver::SplitComplex;
using sonivex::BankMemory;
using sonivex::Ears;
using sonivex::kSnapshotsOfPlanes;
using sonivex::kTileFloats;
using sonivex::kTileSpectrumFloats;
using sonivex::LanePlanes;
using sonivex::Snapshot;
using sonivex::Step;

struct Case {
    std::size_t channels;
    std::size_t rows;
    Ears ears;
    bool shares_response;  // both channels have the same response
    std::size_t bins;
    std::size_t partitions;
};

// Spectrum of one channel: bins 0 .. L, of which the first and the last are real.
std::unique_ptr<SplitComplex> randomSpectrum(test::Random& random, std::size_t bins) {
    auto spectrum = std::make_unique<SplitComplex>(bins + 1);
    for (std::size_t bin = 0; bin <= bins; ++bin) {
        spectrum->re()[bin] = static_cast<float>(random.between(-30000, 30000)) / 7.0F;
        spectrum->im()[bin] = static_cast<float>(random.between(-30000, 30000)) / 11.0F;
    }
    spectrum->im()[0] = 0.0F;
    spectrum->im()[bins] = 0.0F;
    return spectrum;
}

// A random valid step for a block that already holds `fill` frames: up to four snapshots, cut anywhere.
Step randomStep(test::Random& random, std::size_t block_frames, std::size_t fill) {
    Step step;
    step.block_frames = block_frames;
    const auto most = static_cast<std::size_t>(random.between(1, sonivex::kMaxSnapshots));
    std::size_t block = 0;
    std::size_t fresh = 0;
    std::size_t room = sonivex::kMaxBlocksOfFrames * block_frames;
    while (step.count < most) {
        const auto left = static_cast<int>(block_frames - fill);
        const bool finishes = random.between(0, 1) == 0;
        const std::size_t to =
            finishes ? block_frames : fill + static_cast<std::size_t>(random.between(1, left));
        if (to - fill > room || (fill == 0 && ++fresh > sonivex::kMaxFreshBlocks)) break;
        room -= to - fill;
        step.snapshots[step.count++] = {block, fill, to};
        fill = to % block_frames;
        if (fill == 0) ++block;
    }
    return step;
}

// Names the kind of a step, which depends on three things: whether the first block begins in it, which blocks
// the snapshots belong to, and whether it finishes the last block.
std::string kindOf(const Step& step) {
    std::string kind = step.beginsABlock() ? "fresh " : "continued ";
    for (std::size_t i = 0; i < step.count; ++i) kind += std::to_string(step.snapshots[i].block);
    return kind + (step.endsWithABlock() ? " finished" : " open");
}

// Runs the scalar sums and the kernels side by side through several steps.
class KernelBesideScalar {
  public:
    explicit KernelBesideScalar(const Case& c)
        : case_(c),
          tiles_((c.channels * c.bins + kTileFloats - 1) / kTileFloats),
          random_(c.bins + c.partitions) {
        inputs_.resizeOrThrow(tiles_ * (c.partitions - 1) * kTileSpectrumFloats);
        responses_.resizeOrThrow(tiles_ * c.partitions *
                                 (c.shares_response ? kTileFloats : c.rows * kTileSpectrumFloats));
        accumulated_.resizeOrThrow(tiles_ * c.rows * kTileSpectrumFloats);
        for (std::size_t i = 0; i < c.rows * c.channels * c.partitions; ++i) {
            scalar_responses_.push_back(randomSpectrum(random_, c.bins));
        }
        for (std::size_t row = 0; row < c.rows; ++row) {
            for (std::size_t channel = 0; channel < c.channels; ++channel) {
                for (std::size_t i = 0; i < c.partitions; ++i) placeResponse(row, channel, i);
            }
        }
        for (std::size_t channel = 0; channel < c.channels; ++channel) {
            older_.emplace_back();
            sums_of_older_.emplace_back();
            for (std::size_t i = 0; i + 1 < c.partitions; ++i) {
                older_.back().push_back(std::make_unique<SplitComplex>(c.bins + 1));
            }
        }
    }

    void render(const Step& step) {
        const std::size_t planes_of_step = (step.lanes() + kSnapshotsOfPlanes - 1) / kSnapshotsOfPlanes;
        snapshots_of_planes_ = std::min(step.lanes(), kSnapshotsOfPlanes);
        in_ = std::make_unique<Planes>(planeFloats(step.lanes()));
        for (std::size_t i = 0; i < 2; ++i) {
            const std::size_t floats = planeFloats(snapshots_of_planes_ * case_.rows);
            out_[i] = std::make_unique<Planes>(i < planes_of_step ? floats : 0);
        }
        std::vector<Spectra> spectra;
        for (std::size_t i = 0; i < step.count; ++i) {
            spectra.push_back(randomBlock());
            placeInput(spectra.back(), i, step.lanes());
        }
        const LanePlanes out[2] = {out_[0]->lanes(), out_[1]->lanes()};
        sonivex::bankArithmetic().render(memory(), case_.ears, newest_, step, in_->lanes(), out);

        for (std::size_t i = 0; i < step.count; ++i) {
            const Snapshot& snapshot = step.snapshots[i];
            SCOPED_TRACE(kindOf(step) + ", snapshot " + std::to_string(i));
            if (snapshot.from == 0) beginBlock();
            expectSums(spectra[i], i);
            if (::testing::Test::HasFatalFailure()) return;
            if (snapshot.to == step.block_frames) finishBlock(spectra[i]);
        }
    }

  private:
    using Spectra = std::vector<std::shared_ptr<SplitComplex>>;  // one per channel

    // Exactly as many floats as the kernels may touch, so that a sanitizer reports any access beyond them.
    // Lanes that a step does not use hold NaN.
    struct Planes {
        Buffer<float> re;
        Buffer<float> im;

        explicit Planes(std::size_t floats) {
            re.resizeOrThrow(floats);
            im.resizeOrThrow(floats);
            std::fill_n(re.data(), floats, std::numeric_limits<float>::quiet_NaN());
            std::fill_n(im.data(), floats, std::numeric_limits<float>::quiet_NaN());
        }
        LanePlanes lanes() { return {re.data(), im.data()}; }
    };

    std::size_t planeFloats(std::size_t lanes) const { return tiles_ * kTileFloats * lanes; }
    BankMemory memory() {
        return {inputs_.data(),   responses_.data(), accumulated_.data(), tiles_,
                case_.partitions, case_.channels,    case_.rows,          case_.shares_response};
    }
    const SplitComplex& response(std::size_t row, std::size_t channel, std::size_t i) const {
        const std::size_t own = case_.shares_response ? 0 : row * case_.channels + channel;
        return *scalar_responses_[own * case_.partitions + i];
    }
    // The last bin's real part is stored in place of the first bin's imaginary part.
    static float packedIm(const SplitComplex& spectrum, std::size_t bin) {
        return bin == 0 ? spectrum.re()[spectrum.size() - 1] : spectrum.im()[bin];
    }

    void placeResponse(std::size_t row, std::size_t channel, std::size_t i) {
        if (case_.shares_response) return placeSharedResponse(i);
        for (std::size_t bin = 0; bin < case_.bins; ++bin) {
            const std::size_t k = bin * case_.channels + channel;
            const std::size_t spectrum = (k / kTileFloats * case_.partitions + i) * case_.rows + row;
            float* const tile = responses_.data() + spectrum * kTileSpectrumFloats;
            tile[k % kTileFloats] = response(row, channel, i).re()[bin];
            tile[kTileFloats + k % kTileFloats] = packedIm(response(row, channel, i), bin);
        }
    }

    // A shared response is stored once for both channels, in tiles of half the size.
    void placeSharedResponse(std::size_t i) {
        constexpr std::size_t kBins = kTileFloats / 2;
        for (std::size_t bin = 0; bin < case_.bins; ++bin) {
            float* const tile = responses_.data() + (bin / kBins * case_.partitions + i) * kTileFloats;
            tile[bin % kBins] = response(0, 0, i).re()[bin];
            tile[kBins + bin % kBins] = packedIm(response(0, 0, i), bin);
        }
    }

    Spectra randomBlock() {
        Spectra block;
        for (std::size_t channel = 0; channel < case_.channels; ++channel) {
            block.push_back(randomSpectrum(random_, case_.bins));
        }
        return block;
    }

    void placeInput(const Spectra& spectra, std::size_t snapshot, std::size_t lanes) {
        for (std::size_t channel = 0; channel < case_.channels; ++channel) {
            for (std::size_t bin = 0; bin < case_.bins; ++bin) {
                const std::size_t lane = (bin * lanes + snapshot) * case_.channels + channel;
                in_->re.data()[lane] = spectra[channel]->re()[bin];
                in_->im.data()[lane] = packedIm(*spectra[channel], bin);
            }
        }
    }

    void beginBlock() {
        for (std::size_t channel = 0; channel < case_.channels; ++channel) {
            auto& sums = sums_of_older_[channel];
            sums.clear();
            for (std::size_t row = 0; row < case_.rows; ++row) {
                sums.push_back(std::make_unique<SplitComplex>(case_.bins + 1));
                for (std::size_t i = 1; i < case_.partitions; ++i) {
                    ComplexMultiplyAccumulate(*sums.back(), response(row, channel, i),
                                              *older_[channel][i - 1]);
                }
            }
        }
    }

    void finishBlock(const Spectra& spectra) {
        if (case_.partitions == 1) return;
        for (std::size_t channel = 0; channel < case_.channels; ++channel) {
            older_[channel].insert(older_[channel].begin(), spectra[channel]);
            older_[channel].pop_back();
        }
        newest_ = sonivex::slotOfNextBlock(newest_, case_.partitions - 1);
    }

    void expectSums(const Spectra& spectra, std::size_t snapshot) {
        Planes& out = *out_[snapshot / kSnapshotsOfPlanes];
        const bool are_channels = case_.ears == Ears::kChannels;
        const std::size_t terms = are_channels ? case_.rows : case_.channels;
        const std::size_t ears = are_channels ? case_.channels : case_.rows;
        for (std::size_t row = 0; row < case_.rows; ++row) {
            for (std::size_t channel = 0; channel < case_.channels; ++channel) {
                SplitComplex sum(case_.bins + 1);
                std::copy_n(sums_of_older_[channel][row]->re(), sum.size(), sum.re());
                std::copy_n(sums_of_older_[channel][row]->im(), sum.size(), sum.im());
                ComplexMultiplyAccumulate(sum, *spectra[channel], response(row, channel, 0));
                const std::size_t term = are_channels ? row : channel;
                const std::size_t ear = are_channels ? channel : row;
                for (std::size_t bin = 0; bin < case_.bins; ++bin) {
                    const std::size_t lane =
                        ((bin * terms + term) * snapshots_of_planes_ + snapshot % kSnapshotsOfPlanes) * ears +
                        ear;
                    if (out.re.data()[lane] == sum.re()[bin] && out.im.data()[lane] == packedIm(sum, bin))
                        continue;
                    FAIL() << "row " << row << ", channel " << channel << ", bin " << bin << ": "
                           << out.re.data()[lane] << ", " << out.im.data()[lane] << " for " << sum.re()[bin]
                           << ", " << packedIm(sum, bin);
                }
            }
        }
    }

    Case case_;
    std::size_t tiles_;
    test::Random random_;
    Buffer<float> inputs_;
    Buffer<float> responses_;
    Buffer<float> accumulated_;
    std::unique_ptr<Planes> in_;
    std::unique_ptr<Planes> out_[2];
    std::size_t snapshots_of_planes_ = 1;
    std::vector<std::unique_ptr<SplitComplex>> scalar_responses_;            // [row][channel][partition]
    std::vector<Spectra> older_;                                             // [channel], newest first
    std::vector<std::vector<std::unique_ptr<SplitComplex>>> sums_of_older_;  // [channel][row]
    std::size_t newest_ = 0;
};

template <typename Check>
void forEveryBankCase(Check check) {
    constexpr Case kBankShapes[] = {
        {1, 1, Ears::kBoth, false, 1, 1},     {1, 2, Ears::kRows, false, 1, 1},
        {2, 1, Ears::kChannels, false, 1, 1}, {2, 1, Ears::kChannels, true, 1, 1},
        {2, 2, Ears::kRows, false, 1, 1},     {2, 2, Ears::kChannels, false, 1, 1}};
    test::forEachVectorTarget([&] {
        for (Case c : kBankShapes) {
            for (const std::size_t bins : {1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U, 256U}) {
                for (const std::size_t partitions : {1U, 2U, 3U, 7U}) {
                    c.bins = bins;
                    c.partitions = partitions;
                    SCOPED_TRACE(std::string(c.shares_response ? "shared, " : "") +
                                 std::to_string(c.channels) + " channels, " + std::to_string(c.rows) +
                                 " rows, " + std::to_string(bins) + " bins, " + std::to_string(partitions) +
                                 " partitions");
                    check(c);
                    if (::testing::Test::HasFatalFailure()) return;
                }
            }
        }
    });
}

TEST(ConvolutionBankArithmetic, EqualsTheScalarSumToTheBitBlockByBlock) {
    forEveryBankCase([](const Case& c) {
        KernelBesideScalar both(c);
        for (std::size_t block = 0; block < 2 * c.partitions + 1; ++block) {
            both.render({.snapshots = {{{0, 0, c.bins}}}, .count = 1, .block_frames = c.bins});
            if (::testing::Test::HasFatalFailure()) return;
        }
    });
}

// Short blocks cost little, so they get more steps.
TEST(ConvolutionBankArithmetic, EqualsTheScalarSumToTheBitForStepsOfAnyKindInAnyOrder) {
    forEveryBankCase([](const Case& c) {
        KernelBesideScalar both(c);
        test::Random random(31 * c.bins + c.partitions);
        std::size_t fill = 0;
        for (std::size_t step = 0; step < (c.bins <= 16 ? 120 : 40); ++step) {
            const Step next = randomStep(random, c.bins, fill);
            both.render(next);
            if (::testing::Test::HasFatalFailure()) return;
            fill = next.lastFill();
        }
    });
}

TEST(ConvolutionBankArithmetic, EqualsTheScalarSumToTheBitForTheStepsOfRandomCalls) {
    forEveryBankCase([](const Case& c) {
        KernelBesideScalar both(c);
        test::Random random(7 * c.bins + c.partitions);
        std::size_t fill = 0;
        for (std::size_t renders = 0; renders < 10; ++renders) {
            const auto frames = static_cast<std::size_t>(random.between(1, static_cast<int>(2 * c.bins + 1)));
            sonivex::Steps steps(c.bins, fill, frames, static_cast<std::size_t>(random.between(1, 4)));
            while (steps.areLeft()) {
                const Step step = steps.next();
                both.render(step);
                if (::testing::Test::HasFatalFailure()) return;
                fill = step.lastFill();
            }
        }
    });
}

// Counted by hand. A step that begins with a fresh block has up to two blocks: 1 + 2 + 3 + 4 ways to divide
// up to four snapshots among them. A step that continues a block has up to three: 1 + 2 + 4 + 7 ways. Its
// last block is finished or open; a third block is always open, because finishing it would take more frames
// than two blocks have.
TEST(ConvolutionBankArithmetic, RandomStepsCoverEveryKind) {
    test::Random random(1);
    std::set<std::string> kinds;
    std::size_t fill = 0;
    for (int i = 0; i < 10000; ++i) {
        const Step step = randomStep(random, 256, fill);
        kinds.insert(kindOf(step));
        fill = step.lastFill();
    }
    EXPECT_EQ(kinds.size(), 2U * (10 + 14) - 4);
}

}  // namespace
