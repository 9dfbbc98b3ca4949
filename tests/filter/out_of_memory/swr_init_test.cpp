// Lists the one crash that a lack of memory can cause: the one inside libswresample that docs/known-limits.md
// describes. Every request inside swr_init fails in turn, each in a process of its own. A process may die of
// this crash only, which its stack tells: a division by zero inside libswresample, called by swr_convert from
// libavfilter.
#include <execinfo.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "failing_calls/failing_memory.h"
#include "filter/faults/filter_under_test.h"

namespace test {
namespace {

constexpr int kSurvived = 0;
constexpr int kHarmed = 1;  // a frame after the failure is missing or wrong
constexpr int kEnough = 2;  // there were fewer requests
constexpr int kMostRequests = 100;
constexpr int kMostStackFrames = 40;

int stack_pipe = -1;

// Writes the stack, then dies of the same signal. Nothing here asks for memory.
void writeStackAndDie(int signal_number) {
    void* frames[kMostStackFrames];
    backtrace_symbols_fd(frames, backtrace(frames, kMostStackFrames), stack_pipe);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

// Passes frames through a filter while a request inside swr_init fails. @return an exit code.
int passFrames(const FrameSpec& spec, int first) {
    FilterUnderTest filter;
    filter.startNormalizer();
    FailingMemory memory(first, FailingMemory::Which::kOne);
    memory.onlyInsideSwrInit();
    auto frame = makeFrame(spec, noiseSource(1, 3000));
    memory.during([&] { filter.pass(std::move(frame)); });
    if (!memory.hasFailed()) return kEnough;
    const auto next = filter.pass(makeFrame(spec, noiseSource(2, 3000)));
    return next != nullptr && avFrameOf(next)->format == AV_SAMPLE_FMT_FLTP ? kSurvived : kHarmed;
}

struct End {
    int status = 0;  // of waitpid
    std::vector<std::string> stack;
};

End endOfAProcess(const FrameSpec& spec, int first) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        stack_pipe = ends[1];
        void* warm_up[1];
        backtrace(warm_up, 1);  // loads its library now, while there is memory
        for (const int signal_number : {SIGFPE, SIGSEGV, SIGABRT, SIGBUS, SIGILL}) {
            signal(signal_number, writeStackAndDie);
        }
        _exit(passFrames(spec, first));
    }
    close(ends[1]);
    End end;
    std::string text;
    char piece[1024];
    for (ssize_t count = 0; (count = read(ends[0], piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    EXPECT_EQ(waitpid(child, &end.status, 0), child);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t line_end = std::min(text.find('\n', at), text.size());
        end.stack.push_back(text.substr(at, line_end - at));
        at = line_end + 1;
    }
    return end;
}

bool isIn(const std::string& frame, const char* what) {
    return frame.find(what) != std::string::npos;
}

// Compares the stack with the one in docs/known-limits.md. A function that its library does not export has no
// name.
bool isTheKnownCrash(const End& end) {
    if (!WIFSIGNALED(end.status) || WTERMSIG(end.status) != SIGFPE) return false;
    std::size_t at = 0;
    while (at < end.stack.size() && !isIn(end.stack[at], "libswresample")) ++at;
    // Only the handler and the return from it stand above the fault.
    if (at > 3) return false;
    bool has_converted = false;
    for (; at < end.stack.size() && isIn(end.stack[at], "libswresample"); ++at) {
        has_converted = isIn(end.stack[at], "swr_convert");
    }
    return has_converted && at < end.stack.size() && isIn(end.stack[at], "libavfilter");
}

class SwrInitOutOfMemory : public testing::Test {
  protected:
    void failEveryRequest(const FrameSpec& spec) {
        for (int first = 1; first < kMostRequests; ++first) {
            SCOPED_TRACE("request " + std::to_string(first) + " inside swr_init");
            const End end = endOfAProcess(spec, first);
            if (WIFEXITED(end.status) && WEXITSTATUS(end.status) == kEnough) return;
            if (isTheKnownCrash(end)) {
                ++known_crashes_;
                continue;
            }
            ++survivals_;
            EXPECT_TRUE(WIFEXITED(end.status)) << testing::PrintToString(end.stack);
            EXPECT_EQ(WEXITSTATUS(end.status), kSurvived);
        }
        FAIL() << "there is no end of requests";
    }

    int known_crashes_ = 0;
    int survivals_ = 0;
};

TEST_F(SwrInitOutOfMemory, EndsAProcessOnlyByTheKnownCrash) {
    FrameSpec spec;
    spec.format = AV_SAMPLE_FMT_FLTP;
    failEveryRequest(spec);
    EXPECT_LE(known_crashes_, 2) << "one for each graph";
}

TEST_F(SwrInitOutOfMemory, IsHarmlessWhereTheChannelsAreMixed) {
    FrameSpec spec;
    spec.format = AV_SAMPLE_FMT_FLTP;
    spec.channels = 6;
    spec.layout = "5.1(side)";
    failEveryRequest(spec);
    EXPECT_GT(survivals_, 0);
    EXPECT_LE(known_crashes_, 1) << "the graph back to the player's format only";
}

}  // namespace
}  // namespace test
