/* Multiply-accumulate over tiles against the scalar one over whole spectra, bit for bit, at every width. */
#include "bank_arithmetic.h"

#include <gtest/gtest.h>

#include "spectrum_arithmetic.h"
#include "support/each_vector_target.h"
#include "support/signals.h"

namespace {

using fftconvolver::BankMemory;
using fftconvolver::Buffer;
using fftconvolver::Ears;
using fftconvolver::kTileFloats;
using fftconvolver::kTileSpectrumFloats;
using fftconvolver::LanePlanes;
using fftconvolver::SplitComplex;

struct Case {
    std::size_t channels;
    std::size_t rows;
    Ears ears;
    std::size_t bins;
    std::size_t partitions;
};

/* A spectrum of one channel: bins 0 .. L, of which the first and the last are real. */
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

/* The scalar sums and the kernels', side by side through some blocks. */
class Both {
  public:
    explicit Both(const Case& c)
        : case_(c),
          tiles_((c.channels * c.bins + kTileFloats - 1) / kTileFloats),
          random_(c.bins + c.partitions) {
        inputs_.resizeOrThrow(tiles_ * (c.partitions - 1) * kTileSpectrumFloats);
        responses_.resizeOrThrow(tiles_ * c.partitions * c.rows * kTileSpectrumFloats);
        accumulated_.resizeOrThrow(tiles_ * c.rows * kTileSpectrumFloats);
        in_.resizeOrThrow(2 * planeFloats());
        out_.resizeOrThrow(2 * planeFloats() * c.rows);
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
        beginBlock();
    }

    /* As it is filled: the newest block's spectrum changes, what is older stays. */
    void oneBlock(bool is_new, bool is_finished) {
        if (is_new) beginBlock();
        const Spectra block = randomBlock();
        placeInput(block, 0, 1);
        fftconvolver::bankArithmetic().oneBlock(memory(), case_.ears, newest_, is_new, is_finished, in(),
                                                out());
        expectSums(block, 0, 1);
        if (is_finished) finishBlock(block);
    }

    void twoBlocks() {
        const Spectra a = randomBlock();
        const Spectra b = randomBlock();
        placeInput(a, 0, 2);
        placeInput(b, 1, 2);
        fftconvolver::bankArithmetic().twoBlocks(memory(), case_.ears, newest_, in(), out());
        expectSums(a, 0, 2);
        finishBlock(a);
        beginBlock();
        expectSums(b, 1, 2);
    }

  private:
    using Spectra = std::vector<std::shared_ptr<SplitComplex>>;  // of each channel

    std::size_t planeFloats() const { return 2 * tiles_ * kTileFloats; }
    LanePlanes in() { return {in_.data(), in_.data() + planeFloats()}; }
    LanePlanes out() { return {out_.data(), out_.data() + planeFloats() * case_.rows}; }
    BankMemory memory() {
        return {inputs_.data(),   responses_.data(), accumulated_.data(), tiles_,
                case_.partitions, case_.channels,    case_.rows};
    }
    const SplitComplex& response(std::size_t row, std::size_t channel, std::size_t i) const {
        return *scalar_responses_[(row * case_.channels + channel) * case_.partitions + i];
    }
    /* The last bin's real part takes the place of the first one's imaginary part. */
    static float packedIm(const SplitComplex& spectrum, std::size_t bin) {
        return bin == 0 ? spectrum.re()[spectrum.size() - 1] : spectrum.im()[bin];
    }

    void placeResponse(std::size_t row, std::size_t channel, std::size_t i) {
        for (std::size_t bin = 0; bin < case_.bins; ++bin) {
            const std::size_t k = bin * case_.channels + channel;
            const std::size_t spectrum = (k / kTileFloats * case_.partitions + i) * case_.rows + row;
            float* const tile = responses_.data() + spectrum * kTileSpectrumFloats;
            tile[k % kTileFloats] = response(row, channel, i).re()[bin];
            tile[kTileFloats + k % kTileFloats] = packedIm(response(row, channel, i), bin);
        }
    }

    Spectra randomBlock() {
        Spectra block;
        for (std::size_t channel = 0; channel < case_.channels; ++channel) {
            block.push_back(randomSpectrum(random_, case_.bins));
        }
        return block;
    }

    void placeInput(const Spectra& spectra, std::size_t block, std::size_t blocks) {
        for (std::size_t channel = 0; channel < case_.channels; ++channel) {
            for (std::size_t bin = 0; bin < case_.bins; ++bin) {
                const std::size_t lane = (bin * blocks + block) * case_.channels + channel;
                in().re[lane] = spectra[channel]->re()[bin];
                in().im[lane] = packedIm(*spectra[channel], bin);
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
        newest_ = fftconvolver::slotBefore(newest_, case_.partitions - 1);
    }

    void expectSums(const Spectra& spectra, std::size_t block, std::size_t blocks) {
        for (std::size_t row = 0; row < case_.rows; ++row) {
            for (std::size_t channel = 0; channel < case_.channels; ++channel) {
                SplitComplex sum(case_.bins + 1);
                std::copy_n(sums_of_older_[channel][row]->re(), sum.size(), sum.re());
                std::copy_n(sums_of_older_[channel][row]->im(), sum.size(), sum.im());
                ComplexMultiplyAccumulate(sum, *spectra[channel], response(row, channel, 0));
                const bool are_rows = case_.ears == Ears::kRows;
                const std::size_t term = are_rows ? channel : row;
                const std::size_t ear = are_rows ? row : channel;
                const std::size_t terms = are_rows ? case_.channels : case_.rows;
                const std::size_t ear_count = are_rows ? case_.rows : case_.channels;
                for (std::size_t bin = 0; bin < case_.bins; ++bin) {
                    const std::size_t lane = ((bin * terms + term) * blocks + block) * ear_count + ear;
                    ASSERT_EQ(out().re[lane], sum.re()[bin])
                        << "row " << row << ", channel " << channel << ", bin " << bin;
                    ASSERT_EQ(out().im[lane], packedIm(sum, bin))
                        << "row " << row << ", channel " << channel << ", bin " << bin;
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
    Buffer<float> in_;
    Buffer<float> out_;
    std::vector<std::unique_ptr<SplitComplex>> scalar_responses_;            // [row][channel][partition]
    std::vector<Spectra> older_;                                             // of each channel, newest first
    std::vector<std::vector<std::unique_ptr<SplitComplex>>> sums_of_older_;  // [channel][row]
    std::size_t newest_ = 0;
};

template <typename Check>
void forEveryCase(Check check) {
    constexpr Case kShapes[] = {{1, 1, Ears::kRows, 1, 1},
                                {1, 2, Ears::kRows, 1, 1},
                                {2, 1, Ears::kChannels, 1, 1},
                                {2, 2, Ears::kRows, 1, 1},
                                {2, 2, Ears::kChannels, 1, 1}};
    test::forEachVectorTarget([&] {
        for (Case c : kShapes) {
            for (const std::size_t bins : {1U, 2U, 4U, 8U, 16U, 32U, 128U}) {
                for (const std::size_t partitions : {1U, 2U, 3U, 7U}) {
                    c.bins = bins;
                    c.partitions = partitions;
                    SCOPED_TRACE(std::to_string(c.channels) + " channels, " + std::to_string(c.rows) +
                                 " rows, " + std::to_string(bins) + " bins, " + std::to_string(partitions) +
                                 " partitions");
                    check(c);
                    if (::testing::Test::HasFatalFailure()) return;
                }
            }
        }
    });
}

TEST(BankArithmetic, OneBlockHasTheBitsOfTheScalarSum) {
    forEveryCase([](const Case& c) {
        Both both(c);
        for (std::size_t block = 0; block < 2 * c.partitions + 1; ++block) {
            both.oneBlock(true, false);
            both.oneBlock(false, false);
            both.oneBlock(false, true);
            both.oneBlock(true, true);
        }
    });
}

TEST(BankArithmetic, TwoBlocksHaveTheBitsOfOneAfterTheOther) {
    forEveryCase([](const Case& c) {
        Both both(c);
        both.oneBlock(true, false);
        for (std::size_t block = 0; block < 2 * c.partitions + 1; ++block) {
            both.twoBlocks();
            both.twoBlocks();
            both.oneBlock(false, true);
            both.oneBlock(true, false);
        }
    });
}

}  // namespace
