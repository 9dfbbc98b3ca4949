// Checks the filter as its player sees it: its operations, the order and initial values of its fields, and
// the limits of its queues.
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "filter/faults/filter_under_test.h"

namespace test {
namespace {

using Vorlin::filterPrototype;
using Vorlin::IAudioFilter;
using Vorlin::IFilter;
using Vorlin::IQFFrame;
using Vorlin::sonivexFilter;

constexpr int kTryAgain = -35;

std::unique_ptr<IQFFrame> anyFrame() {
    return makeFrame({}, noiseSource(1));
}

TEST(FilterContract, DerivesFromIAudioFilterFirstAndFilterPrototypeSecond) {
    static_assert(std::is_base_of_v<IFilter, IAudioFilter>);
    FilterUnderTest filter;
    const auto* audio_filter = static_cast<const IAudioFilter*>(&*filter);
    const auto* prototype = static_cast<const filterPrototype*>(&*filter);
    EXPECT_EQ(static_cast<const void*>(audio_filter), static_cast<const void*>(&*filter));
    EXPECT_GT(static_cast<const void*>(prototype), static_cast<const void*>(audio_filter));
    EXPECT_EQ(dynamic_cast<const sonivexFilter*>(prototype), &*filter);
}

TEST(FilterContract, StartsWithItsDocumentedFieldValues) {
    FilterUnderTest filter;
    EXPECT_EQ(filter.field(Peer::kSurroundHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kDialogueHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kNormalizerHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kCurrentTarget), "");
    EXPECT_EQ(filter.field(Peer::kSurroundType), 1);
    EXPECT_EQ(filter.field(Peer::kSurroundMode), 1);
    EXPECT_EQ(filter.field(Peer::kSurroundLimiter), 1);
    EXPECT_FALSE(filter.field(Peer::kEnableSurround));
    EXPECT_FALSE(filter.field(Peer::kEnableDialogue));
    EXPECT_FALSE(filter.field(Peer::kEnableNormalizer));
    EXPECT_EQ(filter.field(Peer::kVoice), 1.0);
    EXPECT_FALSE(filter.field(Peer::kEnableDump));
    EXPECT_TRUE(filter.field(Peer::kDumpFds).empty());
    EXPECT_TRUE(filter.field(Peer::kDumpTotals).empty());
    EXPECT_TRUE(filter.field(Peer::kDumpPaths).empty());
    EXPECT_EQ(filter.field(Peer::kSessionId), "");
    EXPECT_EQ(filter.field(Peer::kSupportedNames), std::vector<std::string>{"sonivex"});
    EXPECT_EQ(filter.field(Peer::kThread), nullptr) << "an inactive filter has no worker";
    EXPECT_TRUE(filter.field(Peer::kInvalid));
    EXPECT_FALSE(filter.field(Peer::kOverFps));
    EXPECT_TRUE(filter.field(Peer::kCostWindow).empty());
    EXPECT_EQ(filter.field(Peer::kCostSum), 0u);
    EXPECT_EQ(filter.field(Peer::kFps), 0);
    EXPECT_EQ(filter.field(Peer::kSpeed), 1);
    EXPECT_EQ(filter.field(Peer::kFilterGraph), nullptr);
    EXPECT_FALSE(filter.field(Peer::kIsPrototype));
    EXPECT_EQ(filter.field(Peer::kSrcFormat), -1);
    EXPECT_EQ(filter.field(Peer::kOutFilterGraph), nullptr);
    EXPECT_EQ(filter.field(Peer::kOutChannels), -1);
    EXPECT_EQ(filter.field(Peer::kOutSampleRate), -1);
}

TEST(FilterContract, KeepsItsFieldsInDocumentedOrder) {
    FilterUnderTest filter;
    const void* const addresses[] = {
        &filter.field(Peer::kSurroundHandle),
        &filter.field(Peer::kDialogueHandle),
        &filter.field(Peer::kNormalizerHandle),
        &filter.field(Peer::kCurrentTarget),
        &filter.field(Peer::kSurroundType),
        &filter.field(Peer::kSurroundMode),
        &filter.field(Peer::kSurroundLimiter),
        &filter.field(Peer::kEnableSurround),
        &filter.field(Peer::kEnableDialogue),
        &filter.field(Peer::kEnableNormalizer),
        &filter.field(Peer::kVoice),
        &filter.field(Peer::kEnableDump),
        &filter.field(Peer::kDumpFds),
        &filter.field(Peer::kDumpTotals),
        &filter.field(Peer::kDumpPaths),
        &filter.field(Peer::kSessionId),
        &filter.field(Peer::kSupportedNames),
        &filter.field(Peer::kThread),
        &filter.field(Peer::kOutQueue),
        &filter.field(Peer::kInQueue),
        &filter.field(Peer::kInvalid),
        &filter.field(Peer::kOverFps),
        &filter.field(Peer::kCostWindow),
        &filter.field(Peer::kCostSum),
        &filter.field(Peer::kFps),
        &filter.field(Peer::kSpeed),
        &filter.field(Peer::kFilterGraph),
        &filter.field(Peer::kIsPrototype),
        &filter.field(Peer::kSrcFormat),
        &filter.field(Peer::kOutFilterGraph),
        &filter.field(Peer::kOutChannels),
        &filter.field(Peer::kOutSampleRate),
    };
    for (std::size_t i = 1; i < std::size(addresses); ++i)
        EXPECT_LT(addresses[i - 1], addresses[i]) << "field " << i;
}

TEST(FilterContract, AnswersOnlyToTheNameSonivex) {
    FilterUnderTest filter;
    EXPECT_TRUE(filter->is_supported("sonivex", 1, 2, 3));
    for (const char* name : {"", "sonive", "sonivex2", "Sonivex", "SonivexFilter"}) {
        EXPECT_FALSE(filter->is_supported(name, 0, 0, 0)) << name;
    }
    EXPECT_FALSE(filter->is_supported(std::string("sonivex\0", 8), 0, 0, 0));
    EXPECT_EQ(filter->getName(), "SonivexFilter");
}

TEST(FilterContract, IsFoundByNameAndClonesAWorkingFilter) {
    const auto clone = filterPrototype::createFilter("sonivex", {}, {}, true);
    ASSERT_NE(clone, nullptr);
    auto* filter = dynamic_cast<sonivexFilter*>(clone.get());
    ASSERT_NE(filter, nullptr);
    EXPECT_FALSE(filter->*Peer::kIsPrototype);
    EXPECT_TRUE(clone->init(0));
    EXPECT_NE(filter->*Peer::kThread, nullptr);
}

TEST(FilterContract, KeepsItsOneWorkerOnASecondInit) {
    FilterUnderTest filter(Mode::kActive);
    const auto* worker = filter.field(Peer::kThread).get();
    EXPECT_TRUE(filter->init(0));
    EXPECT_EQ(filter.field(Peer::kThread).get(), worker);
}

TEST(FilterContract, StoresTheCurrentTarget) {
    FilterUnderTest filter;
    filter->setCurrentTarget("a film");
    EXPECT_EQ(filter.field(Peer::kCurrentTarget), "a film");
}

TEST(FilterContract, IsInvalidReturnsFalseEvenWhileInvalid) {
    FilterUnderTest filter;
    EXPECT_FALSE(filter->isInvalid()) << "the player keeps its own record of the state";
    EXPECT_TRUE(filter.field(Peer::kInvalid));
}

TEST(FilterQueues, PullFromAnEmptyQueueKeepsTheCallersFrame) {
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

// An active filter that was not initialised has no worker, so pushed frames stay queued.
TEST(FilterQueues, PushIsRefusedWhileTwoFramesWaitForTheWorker) {
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

TEST(FilterQueues, PushIsRefusedWhileThreeFramesWaitForPull) {
    sonivexFilter filter({}, {}, true);
    for (int i = 0; i < 3; ++i) {
        // The test fills the output queue directly, because the loop itself stops at two frames.
        ASSERT_TRUE((filter.*Peer::kOutQueue).push(anyFrame().release()));
    }
    auto frame = anyFrame();
    EXPECT_EQ(filter.push(frame, 0), kTryAgain);
    EXPECT_NE(frame, nullptr);
    std::unique_ptr<IQFFrame> out;
    EXPECT_EQ(filter.pull(out, 0), 0);
    EXPECT_EQ(filter.push(frame, 0), 0);
}

TEST(FilterQueues, TheLoopStopsWhileTwoFramesWaitForPull) {
    FilterUnderTest filter;
    for (int i = 0; i < 4; ++i) {
        auto frame = anyFrame();
        EXPECT_EQ(filter->push(frame, 0), 0) << i;
    }
    EXPECT_EQ(filter.field(Peer::kOutQueue).sizeForConsumer(), 2u);
    EXPECT_EQ(filter.field(Peer::kInQueue).sizeForConsumer(), 2u);
}

TEST(FilterQueues, HoldTenElementsAndRefuseMore) {
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

TEST(FilterQueues, DeliverEveryFrameInOrder) {
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        FilterUnderTest filter(mode);
        std::vector<const IQFFrame*> pushed;
        std::vector<std::unique_ptr<IQFFrame>> pulled;
        for (int i = 0; i < 40; ++i) {
            auto frame = anyFrame();
            pushed.push_back(frame.get());
            filter.pushPatiently(std::move(frame), pulled);
        }
        // Frames that wait behind two finished ones move on with the next run of the loop. An inactive filter
        // runs it only inside push, so the test runs it here.
        while (pulled.size() < pushed.size()) {
            auto frame = filter.pullPatiently();
            if (!frame) {
                ASSERT_EQ(static_cast<int>(mode), static_cast<int>(Mode::kInactive));
                ((*filter).*Peer::kFilterLoop)();
                continue;
            }
            pulled.push_back(std::move(frame));
        }
        for (std::size_t i = 0; i < pushed.size(); ++i) EXPECT_EQ(pulled[i].get(), pushed[i]) << i;
    }
}

}  // namespace
}  // namespace test
