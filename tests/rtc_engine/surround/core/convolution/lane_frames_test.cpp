// Compares the vector code that lays out lanes with a plain loop, bit for bit, at every vector width.
#include "lane_frames.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using sonivex::LaneSources;

constexpr std::uint32_t kGuardBits = 0xFFC12345;  // a NaN
constexpr std::size_t kGuards = 32;

// Random bit patterns, which the vectors must copy unchanged.
std::vector<float> anyBits(test::Random& random, std::size_t count) {
    std::vector<float> numbers(count);
    for (float& number : numbers) {
        const auto bits = static_cast<std::uint32_t>(random.bits());
        std::memcpy(&number, &bits, sizeof number);
    }
    return numbers;
}

// Each source has memory of exactly its size, so that a sanitizer reports every read beyond it. A source
// without frames has a valid pointer, too.
void expectLanes(const std::vector<std::size_t>& filled, std::size_t channels, std::size_t block_frames,
                 test::Random& random) {
    const std::size_t lanes = filled.size();
    std::vector<std::vector<float>> frames;
    LaneSources sources{};
    for (std::size_t lane = 0; lane < lanes; ++lane)
        frames.push_back(anyBits(random, std::max(filled[lane] * channels, std::size_t{1})));
    for (std::size_t lane = 0; lane < lanes; ++lane) sources[lane] = {frames[lane].data(), filled[lane]};

    const std::size_t whole_frames = (block_frames + 15) / 16 * 16;
    float guard = 0.0F;
    std::memcpy(&guard, &kGuardBits, sizeof guard);
    std::vector<float> out(whole_frames * lanes * channels + kGuards, guard);
    sonivex::layLanes(sources, lanes, channels, block_frames, out.data());

    std::vector<float> expected(block_frames * lanes * channels, 0.0F);
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        for (std::size_t i = 0; i < filled[lane]; ++i) {
            std::memcpy(&expected[(i * lanes + lane) * channels], &frames[lane][i * channels],
                        channels * sizeof(float));
        }
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(std::memcmp(&out[i], &expected[i], sizeof(float)), 0)
            << "frame " << i / lanes / channels << ", lane " << i / channels % lanes;
    }
    for (std::size_t i = out.size() - kGuards; i < out.size(); ++i) {
        ASSERT_EQ(std::memcmp(&out[i], &guard, sizeof guard), 0) << "after the frames: " << i;
    }
}

TEST(ConvolutionLaneFrames, LieSideBySideAndArePaddedWithZeros) {
    test::forEachVectorTarget([] {
        test::Random random(1);
        for (const std::size_t block : {1U, 2U, 4U, 8U, 16U, 32U, 64U, 256U}) {
            for (const std::size_t channels : {1U, 2U}) {
                for (const std::size_t lanes : {1U, 2U, 4U}) {
                    SCOPED_TRACE(std::to_string(lanes) + " lanes of " + std::to_string(channels) +
                                 " channels, blocks of " + std::to_string(block));
                    // Tries every fill: in one lane beside random fills, and in all lanes at once.
                    for (std::size_t fill = 0; fill <= block; ++fill) {
                        std::vector<std::size_t> filled(lanes);
                        for (std::size_t& of_lane : filled) {
                            of_lane = static_cast<std::size_t>(random.between(0, static_cast<int>(block)));
                        }
                        filled[fill % lanes] = fill;
                        expectLanes(filled, channels, block, random);
                        expectLanes(std::vector<std::size_t>(lanes, fill), channels, block, random);
                        if (::testing::Test::HasFatalFailure()) return;
                    }
                }
            }
        }
    });
}

}  // namespace
