#include "sample_ring.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>

#include "support/signals/signals.h"

namespace {

using sonivex::SampleRing;

std::unique_ptr<SampleRing> emptyRing() {
    return std::make_unique<SampleRing>();
}

test::Pcm readAll(SampleRing& ring, int count) {
    test::Pcm out(static_cast<std::size_t>(count));
    sonivex::readSamples(ring, out.data(), count);
    return out;
}

TEST(SampleRing, WritesTheFirstSampleAtIndexOne) {
    const auto ring = emptyRing();
    const std::int16_t sample = 1234;
    EXPECT_EQ(sonivex::writeSamples(*ring, &sample, 1), 1);
    EXPECT_EQ(ring->writeIndex, 1);
    EXPECT_EQ(ring->readIndex, 0);
    EXPECT_EQ(ring->data[1], 1234);
    EXPECT_EQ(ring->data[0], 0);
}

TEST(SampleRing, HoldsOneSampleLessThanItsLengthAndRejectsTheRest) {
    const auto ring = emptyRing();
    const test::Pcm pcm = test::noise(1, 81921, 32767);
    EXPECT_EQ(sonivex::writeSamples(*ring, pcm.data(), 81921), 81919);
    EXPECT_EQ(sonivex::fillLevel(*ring), 81919);
    EXPECT_EQ(sonivex::writeSamples(*ring, pcm.data(), 1), 0);
    EXPECT_EQ(readAll(*ring, 81919), test::Pcm(pcm.begin(), pcm.begin() + 81919));
    EXPECT_EQ(sonivex::fillLevel(*ring), 0);
}

TEST(SampleRing, AFullRingAcceptsAsManySamplesAsWereRead) {
    const auto ring = emptyRing();
    const test::Pcm pcm = test::noise(2, 81919, 32767);
    sonivex::writeSamples(*ring, pcm.data(), 81919);
    readAll(*ring, 3);
    EXPECT_EQ(sonivex::writeSamples(*ring, pcm.data(), 10), 3);
}

TEST(SampleRing, WritesNothingForCountsBelowOne) {
    const auto ring = emptyRing();
    const std::int16_t sample = 1;
    EXPECT_EQ(sonivex::writeSamples(*ring, &sample, 0), 0);
    EXPECT_EQ(sonivex::writeSamples(*ring, &sample, -5), 0);
    EXPECT_EQ(ring->writeIndex, 0);
}

TEST(SampleRing, WrapsFromTheLastIndexToZero) {
    const auto ring = emptyRing();
    ring->readIndex = ring->writeIndex = 81918;
    const test::Pcm pcm{11, 22, 33};
    sonivex::writeSamples(*ring, pcm.data(), 3);
    EXPECT_EQ(ring->data[81919], 11);
    EXPECT_EQ(ring->data[0], 22);
    EXPECT_EQ(ring->data[1], 33);
    EXPECT_EQ(ring->writeIndex, 1);
    EXPECT_EQ(readAll(*ring, 3), pcm);
    EXPECT_EQ(ring->readIndex, 1);
}

TEST(SampleRing, KeepsTheIndexAtTheLastSlotAfterABlockThatEndsThere) {
    const auto ring = emptyRing();
    const test::Pcm pcm(81919, 5);
    sonivex::writeSamples(*ring, pcm.data(), 81919);
    EXPECT_EQ(ring->writeIndex, 81919);
    readAll(*ring, 81919);
    EXPECT_EQ(ring->readIndex, 81919);
    sonivex::writeSamples(*ring, pcm.data(), 1);
    EXPECT_EQ(ring->writeIndex, 0);
    readAll(*ring, 1);
    EXPECT_EQ(ring->readIndex, 0);
}

// Reference: writes a single sample.
bool writeOne(SampleRing& ring, std::int16_t sample) {
    const std::int32_t next = (ring.writeIndex + 1) % 81920;
    if (next == ring.readIndex) return false;
    ring.writeIndex = next;
    ring.data[next] = sample;
    return true;
}

RC_GTEST_PROP(SampleRing, WritesABlockLikeSingleSamples, ()) {
    const auto seed = *rc::gen::arbitrary<std::uint64_t>();
    test::Random random(seed);
    const auto ring = emptyRing();
    const auto reference = emptyRing();
    ring->readIndex = ring->writeIndex = reference->readIndex = reference->writeIndex =
        random.between(0, 81919);
    std::deque<std::int16_t> queued;
    for (int step = 0; step < 12; ++step) {
        const test::Pcm pcm = test::noise(random.bits(), random.between(0, 60000), 32767);
        int taken = 0;
        for (const std::int16_t sample : pcm) {
            if (!writeOne(*reference, sample)) break;
            queued.push_back(sample);
            ++taken;
        }
        RC_ASSERT(sonivex::writeSamples(*ring, pcm.data(), static_cast<int>(pcm.size())) == taken);
        RC_ASSERT(ring->writeIndex == reference->writeIndex);
        RC_ASSERT(sonivex::fillLevel(*ring) == static_cast<int>(queued.size()));

        const int count = random.between(0, static_cast<int>(queued.size()));
        const test::Pcm out = readAll(*ring, count);
        RC_ASSERT(std::equal(out.begin(), out.end(), queued.begin()));
        queued.erase(queued.begin(), queued.begin() + count);
        reference->readIndex = (reference->readIndex + count) % 81920;
        RC_ASSERT(ring->readIndex == reference->readIndex);
    }
    RC_ASSERT(std::equal(std::begin(ring->data), std::end(ring->data), std::begin(reference->data)));
}

}  // namespace
