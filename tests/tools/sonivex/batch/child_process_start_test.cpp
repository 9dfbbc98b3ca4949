// A system that starts no processes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <cerrno>
#include <system_error>

#include "batch_run.h"
#include "child_process.h"
#include "failure.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;

int error_of_fork = 0;

}  // namespace

extern "C" pid_t __wrap_fork();
extern "C" pid_t __real_fork();
extern "C" pid_t __wrap_fork() {
    if (error_of_fork == 0) return __real_fork();
    errno = error_of_fork;
    return -1;
}

namespace {

class WithoutProcesses : public testing::Test {
  protected:
    WithoutProcesses() { error_of_fork = EAGAIN; }
    ~WithoutProcesses() override { error_of_fork = 0; }
};

TEST_F(WithoutProcesses, AChildThrowsAndLeavesNoDescriptorOpen) {
    const int before = test::openDescriptors();
    try {
        const ChildProcess child({"--version"});
        ADD_FAILURE() << "it runs without a process";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), EAGAIN);
        EXPECT_THAT(error.what(), testing::StartsWith("fork: "));
    }
    EXPECT_EQ(test::openDescriptors(), before);
}

TEST_F(WithoutProcesses, ABatchFailsFileByFile) {
    const test::TemporaryFolder folder;
    test::writeFile(folder.file("a.wav"), "sound");
    test::writeFile(folder.file("b.wav"), "sound");
    test::writeFile(folder.file("list"), folder.file("a.wav") + "\n" + folder.file("b.wav") + "\n");
    BatchSettings settings;
    settings.list = folder.file("list");
    settings.output_folder = folder.file("out");
    Console console(true);
    const BatchReport report = runBatch(settings, console, [](const BatchResult&) {});
    ASSERT_EQ(report.failures.size(), 2U);
    for (const BatchResult& failure : report.failures) {
        EXPECT_EQ(failure.exit_code, static_cast<int>(ExitCode::Internal));
        EXPECT_THAT(failure.error, testing::StartsWith("cannot start a process: fork: "));
    }
}

}  // namespace
