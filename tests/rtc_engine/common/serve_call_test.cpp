#include "serve_call.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "support/signals/signals.h"

namespace {

using test::Pcm;

constexpr std::int16_t kUntouched = -7;

// An effect that passes every block through unchanged, up to blocks_at_once blocks per render.
class PassingEffect {
  public:
    explicit PassingEffect(int block_samples, int blocks_at_once = 1)
        : block_samples_(block_samples), blocks_at_once_(blocks_at_once) {}

    // Makes one call that requests out_count samples.
    Pcm call(const Pcm& in, int out_count) {
        Pcm out(static_cast<std::size_t>(out_count), kUntouched);
        call({in.data(), static_cast<int>(in.size())}, {out.data(), out_count});
        return out;
    }
    Pcm call(const Pcm& in) { return call(in, static_cast<int>(in.size())); }

    void call(sonivex::CallInput in, sonivex::CallOutput out) {
        sonivex::serveCall(*in_ring_, *out_ring_, in, out, block_samples_, [this](int blocks_waiting) {
            waiting_.push_back(blocks_waiting);
            const int blocks = std::min(blocks_waiting, blocks_at_once_);
            Pcm samples(static_cast<std::size_t>(blocks * block_samples_));
            sonivex::readSamples(*in_ring_, samples.data(), blocks * block_samples_);
            sonivex::writeSamples(*out_ring_, samples.data(), blocks * block_samples_);
            return blocks;
        });
    }

    int inputQueued() const { return sonivex::fillLevel(*in_ring_); }
    int outputQueued() const { return sonivex::fillLevel(*out_ring_); }
    // Returns the block counts that `render` received since the previous query.
    std::vector<int> waiting() { return std::exchange(waiting_, {}); }

  private:
    int block_samples_;
    int blocks_at_once_;
    std::unique_ptr<sonivex::SampleRing> in_ring_ = std::make_unique<sonivex::SampleRing>();
    std::unique_ptr<sonivex::SampleRing> out_ring_ = std::make_unique<sonivex::SampleRing>();
    std::vector<int> waiting_;
};

// A sequence without repetition within 30000 samples, and without values that mean silence or untouched.
Pcm numbered(int count, int first = 0) {
    Pcm pcm;
    for (int i = first; i < first + count; ++i) pcm.push_back(static_cast<std::int16_t>(1 + i % 30000));
    return pcm;
}

Pcm silence(int count) {
    return Pcm(static_cast<std::size_t>(count), 0);
}

TEST(ServeCall, QueuesACallShorterThanABlockAndReturnsSilence) {
    PassingEffect effect(240);
    EXPECT_EQ(effect.call(numbered(100)), silence(100));
    EXPECT_EQ(effect.inputQueued(), 100);
    EXPECT_EQ(effect.outputQueued(), 0);
    EXPECT_TRUE(effect.waiting().empty());
}

TEST(ServeCall, ServesTheFirstBlockFromTheCallThatCompletesIt) {
    PassingEffect effect(240);
    effect.call(numbered(100));
    EXPECT_EQ(effect.call(numbered(100, 100)), silence(100));
    EXPECT_EQ(effect.call(numbered(100, 200)), numbered(100));
    EXPECT_EQ(effect.call(numbered(100, 300)), numbered(100, 100));
    EXPECT_EQ(effect.call(numbered(100, 400)), numbered(100, 200));
}

TEST(ServeCall, ServesACallOfOneBlockAtOnce) {
    PassingEffect effect(240);
    EXPECT_EQ(effect.call(numbered(240)), numbered(240));
    EXPECT_EQ(effect.inputQueued(), 0);
    EXPECT_EQ(effect.outputQueued(), 0);
}

TEST(ServeCall, LosesNothingInASilentCallWithinTheStream) {
    PassingEffect effect(300);
    effect.call(numbered(200));
    EXPECT_EQ(effect.call(numbered(200, 200)), numbered(200));
    EXPECT_EQ(effect.call(numbered(150, 400)), silence(150));  // only 100 are available
    EXPECT_EQ(effect.outputQueued(), 100);
    EXPECT_EQ(effect.call(numbered(60, 550)), numbered(60, 200));
}

TEST(ServeCall, ServesACallForAllQueuedSamplesButNotForOneMore) {
    PassingEffect effect(300);
    EXPECT_EQ(effect.call(numbered(300), 100), numbered(100));
    EXPECT_EQ(effect.call({}, 201), silence(201));
    EXPECT_EQ(effect.call({}, 200), numbered(200, 100));
}

TEST(ServeCall, DropsTheEndOfACallWhenTheInputRingIsFull) {
    PassingEffect effect(1000);
    EXPECT_EQ(effect.call(numbered(82000), 81000), numbered(81000));
    EXPECT_EQ(effect.inputQueued(), 919);  // of 81919

    Pcm expected = numbered(919, 81000);
    test::append(expected, numbered(81, 82000));
    EXPECT_EQ(effect.call(numbered(81, 82000), 1000), expected);
}

TEST(ServeCall, CallsBeyondTheRingCapacityAreSilentAndAFullOutputRingDropsBlocks) {
    PassingEffect effect(1000);
    EXPECT_EQ(effect.call(numbered(81920)), silence(81920));
    EXPECT_EQ(effect.outputQueued(), 81000);
    EXPECT_EQ(effect.call(numbered(81920, 20000)), silence(81920));
    EXPECT_EQ(effect.inputQueued(), 919);
    EXPECT_EQ(effect.outputQueued(), 81919);

    // The second call's first block begins with the 919 samples that the first call left.
    EXPECT_EQ(effect.call({}, 81919), numbered(81919));
    EXPECT_EQ(effect.outputQueued(), 0);
}

TEST(ServeCall, QueuesAndWritesNothingForCountsBelowOne) {
    PassingEffect effect(240);
    effect.call(numbered(340), 40);
    const Pcm in = numbered(300);
    for (const int count : {0, -1, -100000}) {
        Pcm out(300, kUntouched);
        effect.call({in.data(), count}, {out.data(), count});
        effect.call({nullptr, count}, {nullptr, count});
        EXPECT_EQ(out, Pcm(300, kUntouched));
        EXPECT_EQ(effect.inputQueued(), 100);
        EXPECT_EQ(effect.outputQueued(), 200);
    }
}

TEST(ServeCall, WritesOnlyTheRequestedOutput) {
    PassingEffect effect(240);
    const Pcm in = numbered(240);
    for (const int queued : {100, 240}) {  // first a silent call, then a served one
        Pcm out(102, kUntouched);
        effect.call({in.data(), queued}, {out.data() + 1, 100});
        EXPECT_EQ(out.front(), kUntouched);
        EXPECT_EQ(out.back(), kUntouched);
        EXPECT_EQ(std::count(out.begin(), out.end(), kUntouched), 2);
    }
}

TEST(ServeCall, PassesTheNumberOfQueuedBlocksToRender) {
    PassingEffect one_by_one(240);
    one_by_one.call(numbered(1000));
    EXPECT_EQ(one_by_one.waiting(), (std::vector<int>{4, 3, 2, 1}));
    one_by_one.call(numbered(199));  // with the 40 queued samples, one short of a block
    EXPECT_EQ(one_by_one.waiting(), std::vector<int>{});
    one_by_one.call(numbered(1));
    EXPECT_EQ(one_by_one.waiting(), std::vector<int>{1});

    PassingEffect in_pairs(240, 2);
    in_pairs.call(numbered(1000));
    EXPECT_EQ(in_pairs.waiting(), (std::vector<int>{4, 2}));
    in_pairs.call(numbered(240 * 3));
    EXPECT_EQ(in_pairs.waiting(), (std::vector<int>{3, 1}));
}

TEST(ServeCall, OutputDoesNotDependOnHowManyBlocksRenderTakesAtOnce) {
    PassingEffect one_by_one(240);
    PassingEffect in_pairs(240, 2);
    PassingEffect all_at_once(240, 1000);
    test::Random random(5);
    for (int call = 0; call < 300; ++call) {
        const Pcm in = test::noise(random.bits(), random.between(0, 2000), 32767);
        const Pcm out = one_by_one.call(in);
        ASSERT_EQ(in_pairs.call(in), out) << "call " << call;
        ASSERT_EQ(all_at_once.call(in), out) << "call " << call;
    }
}

TEST(ServeCall, AllowsInputAndOutputInTheSameMemory) {
    PassingEffect effect(100);
    Pcm samples = numbered(150);
    effect.call({samples.data(), 150}, {samples.data(), 150});
    EXPECT_EQ(samples, silence(150));
    samples = numbered(150, 150);
    effect.call({samples.data(), 150}, {samples.data(), 150});
    EXPECT_EQ(samples, numbered(150));
}

}  // namespace
