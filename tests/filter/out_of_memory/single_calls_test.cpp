// Makes every request for memory of a single call fail in turn, once and from then on. A sweep through a
// filter's whole life is too long to meet each of these requests every day.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

#include "failing_calls/sweep.h"
#include "filter/faults/filter_under_test.h"
#include "filter/out_of_memory/last_failure_line.h"
#include "vorlin/filter_prototype.h"

namespace test {
namespace {

// Expects that a call that did not do its work wrote one line. Without any memory there is no line.
void expectOneLine(const LastFailureLine& log, const std::string& line, const FailingMemory& memory) {
    EXPECT_TRUE(memory.hasFailed());
    if (memory.which() == FailingMemory::Which::kAllFromThere) return;
    EXPECT_EQ(log.lines(), 1);
    EXPECT_EQ(log.text(), line);
}

TEST(OneCallOutOfMemory, OfCloneGivesNoFilterAndSaysSo) {
    Vorlin::sonivexFilter original({}, {}, false);
    int refused = 0;
    const Sweep sweep = failEveryRequest(1, [&](FailingMemory& memory) {
        const LastFailureLine log;
        std::unique_ptr<Vorlin::IAudioFilter> filter;
        memory.during([&] { filter.reset(original.clone({}, {}, false)); });
        if (filter != nullptr) return;
        ++refused;
        expectOneLine(log, "sonivex: no memory for a filter", memory);
    });
    EXPECT_GT(refused, sweep.runs / 2) << "nearly every request is for a part of the filter";
}

TEST(OneCallOutOfMemory, OfSetCurrentTargetKeepsTheOldOne) {
    const std::string usual = "usual";
    const std::string target(100, 'x');  // too long to be kept without memory
    int refused = 0;
    const Sweep sweep = failEveryRequest(1, [&](FailingMemory& memory) {
        FilterUnderTest filter;
        filter->setCurrentTarget(usual);
        const LastFailureLine log;
        memory.during([&] { filter->setCurrentTarget(target); });
        if (filter.field(Peer::kCurrentTarget) == target) return;
        ++refused;
        EXPECT_EQ(filter.field(Peer::kCurrentTarget), usual);
        expectOneLine(log, "sonivex: no memory for the name of the target", memory);
    });
    EXPECT_EQ(refused, sweep.runs);
}

// A callback with so many bytes of its own needs memory when it is copied.
TEST(OneCallOutOfMemory, OfIsOverFpsLosesOnlyTheEventOfACallbackThatNeedsMemory) {
    const std::string key = Vorlin::filterPrototype::VIDEO_FPS_OPTION;
    int refused = 0;
    const Sweep sweep = failEveryRequest(1, [&](FailingMemory& memory) {
        FilterUnderTest filter;
        filter->setInvalid(false);
        int events = 0;
        const std::array<char, 200> bytes{};
        filter->setDCA([&events, bytes](int, const std::string&) { events += bytes.empty() ? 0 : 1; });
        const LastFailureLine log;
        memory.during([&] { filter->setOption(key, "100", {}); });
        EXPECT_TRUE(filter->isOverFps());
        if (events == 1) return;
        ++refused;
        EXPECT_EQ(events, 0);
        expectOneLine(log, "sonivex: no memory for the event SonivexFilter:invalid_over_fps", memory);
    });
    EXPECT_GT(refused, 0);
    EXPECT_LE(refused, sweep.runs);
}

}  // namespace
}  // namespace test
