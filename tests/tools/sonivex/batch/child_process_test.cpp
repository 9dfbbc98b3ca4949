#include "child_process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using sonivex_tool::ChildProcess;
using testing::HasSubstr;

// A child runs this program, so it can be a test of this file that is disabled otherwise.
std::vector<std::string> argumentsFor(const std::string& test) {
    return {"--gtest_also_run_disabled_tests", "--gtest_filter=" + test};
}

[[maybe_unused]] std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

void waitUntilItWrites(ChildProcess& child, const std::string& text) {
    while (child.out().find(text) == std::string::npos && !child.poll()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// Runs in a child. It ends by itself, so that a test that fails leaves nothing behind.
TEST(ChildOfATest, DISABLED_IgnoresTheWishThatItEnds) {
    ::signal(SIGTERM, SIG_IGN);
    std::cout << "still here" << std::endl;
    ::sleep(30);
}

TEST(ChildProcess, RunsThisProgramAndHandsOverItsOutputAndExitCode) {
    ChildProcess child({"--gtest_list_tests", "--gtest_filter=ChildProcess.*"});
    while (!child.poll()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(child.exitCode(), 0);
    EXPECT_EQ(child.signal(), 0);
    EXPECT_THAT(child.out(), HasSubstr("RunsThisProgramAndHandsOverItsOutputAndExitCode"));
}

TEST(ChildProcess, IsKilledIfItIgnoresTheWishThatItEnds) {
    const auto begin = std::chrono::steady_clock::now();
    pid_t pid = 0;
    {
        ChildProcess child(argumentsFor("ChildOfATest.DISABLED_IgnoresTheWishThatItEnds"),
                           std::chrono::milliseconds(50));
        waitUntilItWrites(child, "still here");
        ASSERT_THAT(child.out(), HasSubstr("still here"));
        const std::string list = "/proc/self/task/" + std::to_string(::getpid()) + "/children";
        std::FILE* const children = std::fopen(list.c_str(), "re");
        ASSERT_NE(children, nullptr);
        EXPECT_EQ(std::fscanf(children, "%d", &pid), 1);
        std::fclose(children);
    }
    EXPECT_EQ(::kill(pid, 0), -1);  // it is gone, and waited for
    EXPECT_EQ(errno, ESRCH);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(25));
}

#ifndef CHECKS_NEED_DESCRIPTORS
TEST(ChildProcess, OpensNothingIfTheSystemHasNoDescriptorsForIt) {
    const std::vector<std::string> arguments = {"--gtest_list_tests"};
    const std::size_t before = openDescriptors();
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
        EXPECT_EQ(openDescriptors(), before) << room;
    }
}
#endif

}  // namespace
