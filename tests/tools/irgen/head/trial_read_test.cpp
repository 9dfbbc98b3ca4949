#include "trial_read.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>

#include "head_measurements.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

TEST(IrgenTrialRead, RefusesAFileOfWhichReadingDoesNotEnd) {
    try {
        tryReading(SONIVEX_ENDLESS_SOFA, 1);
        ADD_FAILURE() << "accepted";
    } catch (const UnusableHead& reason) {
        EXPECT_STREQ(reason.what(),
                     "cannot be read as a SOFA file: it is damaged, and reading it does not end");
    }
}

TEST(IrgenTrialRead, RefusesAFileOfWhichReadingCrashes) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder.file("pipe.sofa");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    // The process that reads opens the pipe, and then waits for a byte, until this thread ends it.
    std::thread killer([&] {
        const int writer = open(pipe.c_str(), O_WRONLY);
        for (const pid_t child : test::childrenOf(getpid())) kill(child, SIGSEGV);
        close(writer);
    });
    try {
        tryReading(pipe);
        ADD_FAILURE() << "accepted";
    } catch (const UnusableHead& reason) {
        EXPECT_STREQ(reason.what(), "cannot be read as a SOFA file: it is damaged, and reading it crashes");
    }
    // If nothing has opened the pipe, the other thread still waits for a reader.
    const int late_reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    killer.join();
    close(late_reader);
}

// A program that ignores the ends of its processes does not learn how they ended.
TEST(IrgenTrialRead, AcceptsAFileIfTheSystemDoesNotTellHowReadingEnded) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_NO_THROW(tryReading("/dev/null"));
    std::signal(SIGCHLD, before);
}

TEST(IrgenTrialRead, LeavesEveryOtherRefusalToTheReader) {
    EXPECT_NO_THROW(tryReading("/nonexistent/x.sofa"));
    EXPECT_NO_THROW(tryReading("/dev/null"));
}

TEST(IrgenTrialRead, AcceptsThePackagedFile) {
    SONIVEX_NEED_PACKAGED_HEAD();
    EXPECT_NO_THROW(tryReading(SONIVEX_DEFAULT_SOFA));
}

}  // namespace
