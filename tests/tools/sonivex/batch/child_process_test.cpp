#include "child_process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/processes/process.h"

namespace {

using sonivex_tool::ChildProcess;
using testing::HasSubstr;

// Keeps a signal from this thread and from the processes that it starts.
class BlockedSignal {
  public:
    explicit BlockedSignal(int signal) {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, signal);
        pthread_sigmask(SIG_BLOCK, &set, &before_);
    }
    ~BlockedSignal() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignal(const BlockedSignal&) = delete;
    BlockedSignal& operator=(const BlockedSignal&) = delete;

  private:
    sigset_t before_{};
};

TEST(ChildProcess, RunsThisProgramAndHandsOverItsOutputAndExitCode) {
    ChildProcess child({"--gtest_list_tests", "--gtest_filter=ChildProcess.*"});
    while (!child.poll()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(child.exitCode(), 0);
    EXPECT_EQ(child.signal(), 0);
    EXPECT_THAT(child.out(), HasSubstr("RunsThisProgramAndHandsOverItsOutputAndExitCode"));
}

TEST(ChildProcess, IsKilledIfItDoesNotTakeTheWishThatItEnds) {
    constexpr std::chrono::milliseconds kFarewell{50};
    const BlockedSignal blocked(SIGTERM);
    const auto begin = std::chrono::steady_clock::now();
    pid_t pid = 0;
    {
        // It has no end of its own. It dies with this program, because nobody reads its output then.
        const ChildProcess child({"--gtest_repeat=-1", "--gtest_filter=None.OfTheTests"}, kFarewell);
        const std::vector<pid_t> children = test::childrenOf(::getpid());
        ASSERT_EQ(children.size(), 1U);
        pid = children.front();
        EXPECT_EQ(::kill(pid, 0), 0);
    }
    EXPECT_EQ(::kill(pid, 0), -1);  // it is gone, and waited for
    EXPECT_EQ(errno, ESRCH);
    const auto elapsed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(elapsed, kFarewell) << "it took the wish";
    EXPECT_LT(elapsed, ChildProcess::kLongestFarewell) << "it had more time than this owner grants";
}

TEST(ChildProcess, EndsWithCode127IfItsProgramCannotStart) {
    // The system starts no program with an argument of 128 KiB or more.
    ChildProcess child({std::string(std::size_t{256} << 10, 'x')});
    while (!child.poll()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(child.exitCode(), 127);
}

#ifndef CHECKS_NEED_DESCRIPTORS
TEST(ChildProcess, OpensNothingIfTheSystemHasNoDescriptorsForIt) {
    const std::vector<std::string> arguments = {"--gtest_list_tests"};
    const int before = test::openDescriptors();
    const int lowest = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(lowest, 0);
    ::close(lowest);
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    // Room for none of the two pipes, for half of the first, for the first, and for half of the second.
    for (int room = 0; room < 4; ++room) {
        const rlimit few = {.rlim_cur = static_cast<rlim_t>(lowest + room), .rlim_max = usual.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        int error = 0;
        try {
            const ChildProcess child(arguments);
        } catch (const std::system_error& failure) {
            error = failure.code().value();
        }
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
        EXPECT_EQ(error, EMFILE) << room;
        EXPECT_EQ(test::openDescriptors(), before) << room;
    }
}
#endif

}  // namespace
