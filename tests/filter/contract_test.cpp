// The filter as its player sees it: the operations and their slots, the fields' first values, the queues'
// limits.
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "filter_under_test.h"

namespace test {
namespace {

using Vorlin::filterPrototype;
using Vorlin::IAudioFilter;
using Vorlin::IFilter;
using Vorlin::IQFFrame;
using Vorlin::sonivexFilter;

constexpr int kTryAgain = -35;

std::unique_ptr<IQFFrame> anyFrame() {
    return makeFrame({}, noise(1));
}

TEST(FilterContract, DerivesFromTheAudioFilterFirstAndThePrototypeSecond) {
    static_assert(std::is_base_of_v<IFilter, IAudioFilter>);
    FilterUnderTest filter;
    const auto* audioFilter = static_cast<const IAudioFilter*>(&*filter);
    const auto* prototype = static_cast<const filterPrototype*>(&*filter);
    EXPECT_EQ(static_cast<const void*>(audioFilter), static_cast<const void*>(&*filter));
    EXPECT_GT(static_cast<const void*>(prototype), static_cast<const void*>(audioFilter));
    EXPECT_EQ(dynamic_cast<const sonivexFilter*>(prototype), &*filter);
}

TEST(FilterContract, StartsWithTheDocumentedFieldValues) {
    FilterUnderTest filter;
    EXPECT_EQ(filter.field(Peer::surroundHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::dialogueHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::normalizerHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::currentTarget), "");
    EXPECT_EQ(filter.field(Peer::surroundType), 1);
    EXPECT_EQ(filter.field(Peer::surroundMode), 1);
    EXPECT_EQ(filter.field(Peer::surroundLimiter), 1);
    EXPECT_FALSE(filter.field(Peer::enableSurround));
    EXPECT_FALSE(filter.field(Peer::enableDialogue));
    EXPECT_FALSE(filter.field(Peer::enableNormalizer));
    EXPECT_EQ(filter.field(Peer::voice), 1.0);
    EXPECT_FALSE(filter.field(Peer::enableDump));
    EXPECT_TRUE(filter.field(Peer::dumpFds).empty());
    EXPECT_TRUE(filter.field(Peer::dumpTotals).empty());
    EXPECT_TRUE(filter.field(Peer::dumpPaths).empty());
    EXPECT_EQ(filter.field(Peer::sessionId), "");
    EXPECT_EQ(filter.field(Peer::supportedNames), std::vector<std::string>{"sonivex"});
    EXPECT_EQ(filter.field(Peer::thread), nullptr) << "an inactive filter has no worker";
    EXPECT_TRUE(filter.field(Peer::invalid));
    EXPECT_FALSE(filter.field(Peer::overFps));
    EXPECT_TRUE(filter.field(Peer::costWindow).empty());
    EXPECT_EQ(filter.field(Peer::costSum), 0u);
    EXPECT_EQ(filter.field(Peer::fps), 0);
    EXPECT_EQ(filter.field(Peer::speed), 1);
    EXPECT_EQ(filter.field(Peer::filterGraph), nullptr);
    EXPECT_FALSE(filter.field(Peer::isPrototype));
    EXPECT_EQ(filter.field(Peer::srcFormat), -1);
    EXPECT_EQ(filter.field(Peer::outFilterGraph), nullptr);
    EXPECT_EQ(filter.field(Peer::outChannels), -1);
    EXPECT_EQ(filter.field(Peer::outSampleRate), -1);
}

TEST(FilterContract, KeepsItsFieldsInTheDocumentedOrder) {
    FilterUnderTest filter;
    const void* const addresses[] = {
        &filter.field(Peer::surroundHandle),
        &filter.field(Peer::dialogueHandle),
        &filter.field(Peer::normalizerHandle),
        &filter.field(Peer::currentTarget),
        &filter.field(Peer::surroundType),
        &filter.field(Peer::surroundMode),
        &filter.field(Peer::surroundLimiter),
        &filter.field(Peer::enableSurround),
        &filter.field(Peer::enableDialogue),
        &filter.field(Peer::enableNormalizer),
        &filter.field(Peer::voice),
        &filter.field(Peer::enableDump),
        &filter.field(Peer::dumpFds),
        &filter.field(Peer::dumpTotals),
        &filter.field(Peer::dumpPaths),
        &filter.field(Peer::sessionId),
        &filter.field(Peer::supportedNames),
        &filter.field(Peer::thread),
        &filter.field(Peer::outQueue),
        &filter.field(Peer::inQueue),
        &filter.field(Peer::invalid),
        &filter.field(Peer::overFps),
        &filter.field(Peer::costWindow),
        &filter.field(Peer::costSum),
        &filter.field(Peer::fps),
        &filter.field(Peer::speed),
        &filter.field(Peer::filterGraph),
        &filter.field(Peer::isPrototype),
        &filter.field(Peer::srcFormat),
        &filter.field(Peer::outFilterGraph),
        &filter.field(Peer::outChannels),
        &filter.field(Peer::outSampleRate),
    };
    for (std::size_t i = 1; i < std::size(addresses); ++i)
        EXPECT_LT(addresses[i - 1], addresses[i]) << "field " << i;
}

TEST(FilterContract, AnswersToSonivexAndNothingElse) {
    FilterUnderTest filter;
    EXPECT_TRUE(filter->is_supported("sonivex", 1, 2, 3));
    for (const char* name : {"", "sonive", "sonivex2", "Sonivex", "SonivexFilter"}) {
        EXPECT_FALSE(filter->is_supported(name, 0, 0, 0)) << name;
    }
    EXPECT_FALSE(filter->is_supported(std::string("sonivex\0", 8), 0, 0, 0));
    EXPECT_EQ(filter->getName(), "SonivexFilter");
}

TEST(FilterContract, IsFoundByNameAndClonedIntoAWorkingFilter) {
    const auto clone = filterPrototype::createFilter("sonivex", {}, {}, true);
    ASSERT_NE(clone, nullptr);
    auto* filter = dynamic_cast<sonivexFilter*>(clone.get());
    ASSERT_NE(filter, nullptr);
    EXPECT_FALSE(filter->*Peer::isPrototype);
    EXPECT_TRUE(clone->init(0));
    EXPECT_NE(filter->*Peer::thread, nullptr);
}

TEST(FilterContract, InitTwiceKeepsTheOneWorker) {
    FilterUnderTest filter(Mode::Active);
    const auto* worker = filter.field(Peer::thread).get();
    EXPECT_TRUE(filter->init(0));
    EXPECT_EQ(filter.field(Peer::thread).get(), worker);
}

TEST(FilterContract, StoresTheTargetAndNothingElse) {
    FilterUnderTest filter;
    filter->setCurrentTarget("a film");
    EXPECT_EQ(filter.field(Peer::currentTarget), "a film");
}

TEST(FilterContract, SaysNothingAboutItsOwnValidity) {
    FilterUnderTest filter;
    EXPECT_FALSE(filter->isInvalid()) << "the player keeps its own record";
    EXPECT_TRUE(filter.field(Peer::invalid));
}

TEST(FilterQueues, PullOnAnEmptyQueueLeavesTheCallersFrame) {
    FilterUnderTest filter;
    auto frame = anyFrame();
    const auto* before = frame.get();
    EXPECT_EQ(filter->pull(frame, 0), kTryAgain);
    EXPECT_EQ(frame.get(), before);
}

TEST(FilterQueues, PullReplacesTheCallersFrame) {
    FilterUnderTest filter;
    auto pushed = anyFrame();
    const auto* identity = pushed.get();
    ASSERT_EQ(filter->push(pushed, 0), 0);
    EXPECT_EQ(pushed, nullptr);
    auto pulled = anyFrame();
    EXPECT_EQ(filter->pull(pulled, 0), 0);
    EXPECT_EQ(pulled.get(), identity);
}

// An active filter that was not initialised has no worker, so what was pushed stays queued.
TEST(FilterQueues, PushWithTwoFramesWaitingForTheWorkerLeavesTheFrameWithTheCaller) {
    sonivexFilter filter({}, {}, true);
    for (int i = 0; i < 2; ++i) {
        auto frame = anyFrame();
        EXPECT_EQ(filter.push(frame, 0), 0) << i;
    }
    auto third = anyFrame();
    const auto* identity = third.get();
    EXPECT_EQ(filter.push(third, 0), kTryAgain);
    EXPECT_EQ(third.get(), identity);
}

TEST(FilterQueues, PushWithThreeFramesWaitingForPullLeavesTheFrameWithTheCaller) {
    sonivexFilter filter({}, {}, true);
    for (int i = 0; i < 3; ++i) {
        // Queued for pull behind the loop's back, which itself rests at two.
        ASSERT_TRUE((filter.*Peer::outQueue).push(anyFrame().release()));
    }
    auto frame = anyFrame();
    EXPECT_EQ(filter.push(frame, 0), kTryAgain);
    EXPECT_NE(frame, nullptr);
    std::unique_ptr<IQFFrame> out;
    EXPECT_EQ(filter.pull(out, 0), 0);
    EXPECT_EQ(filter.push(frame, 0), 0);
}

TEST(FilterQueues, TheLoopRestsWhileTwoFramesWaitForPull) {
    FilterUnderTest filter;
    for (int i = 0; i < 4; ++i) {
        auto frame = anyFrame();
        EXPECT_EQ(filter->push(frame, 0), 0) << i;
    }
    EXPECT_EQ(filter.field(Peer::outQueue).sizeForConsumer(), 2u);
    EXPECT_EQ(filter.field(Peer::inQueue).sizeForConsumer(), 2u);
}

TEST(FilterQueues, HoldTenFramesEachAndThenStoreNothing) {
    Vorlin::SpscQueue<int> queue(11);
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(queue.push(i));
    EXPECT_FALSE(queue.push(10));
    EXPECT_EQ(queue.sizeForProducer(), 10u);
    EXPECT_EQ(queue.sizeForConsumer(), 10u);
    for (int i = 0; i < 10; ++i) {
        int element = -1;
        EXPECT_TRUE(queue.pop(element));
        EXPECT_EQ(element, i);
    }
    int untouched = 77;
    EXPECT_FALSE(queue.pop(untouched));
    EXPECT_EQ(untouched, 77);
}

TEST(FilterQueues, HandOutEveryFrameInOrder) {
    for (const Mode mode : {Mode::Inactive, Mode::Active}) {
        FilterUnderTest filter(mode);
        std::vector<const IQFFrame*> pushed;
        std::vector<std::unique_ptr<IQFFrame>> pulled;
        for (int i = 0; i < 40; ++i) {
            auto frame = anyFrame();
            pushed.push_back(frame.get());
            filter.pushPatiently(std::move(frame), pulled);
        }
        // What still waits behind two finished frames moves on with the next push; an active worker needs
        // none.
        while (pulled.size() < pushed.size()) {
            auto frame = filter.pullPatiently();
            if (!frame) {
                ASSERT_EQ(static_cast<int>(mode), static_cast<int>(Mode::Inactive));
                ((*filter).*Peer::filterLoop)();
                continue;
            }
            pulled.push_back(std::move(frame));
        }
        for (std::size_t i = 0; i < pushed.size(); ++i) EXPECT_EQ(pulled[i].get(), pushed[i]) << i;
    }
}

}  // namespace
}  // namespace test
