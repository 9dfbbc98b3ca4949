#include "pcm_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;

std::string refusalOf(const std::string& path) {
    try {
        const PcmFile file(path, PcmFormat());
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::InputNotReadable);
        return failure.what();
    }
    return "";
}

TEST(PcmFile, RefusesWhatIsNoFileWithoutWaitingForIt) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder.file("a.pcm");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(refusalOf(pipe), "cannot read \"" + pipe + "\": it is not a regular file");
    EXPECT_EQ(refusalOf(folder.path()), "cannot read \"" + folder.path() + "\": it is a folder");
}

}  // namespace
