#include "result_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "support/processes/temporary_folder.h"

namespace {

using sonivex_tool::originalStandardOutput;
using sonivex_tool::ResultStream;

// Replaces a descriptor by a file for the lifetime of the object.
class Redirected {
  public:
    Redirected(int descriptor, const std::string& path) : descriptor_(descriptor), kept_(dup(descriptor)) {
        (void)std::fflush(nullptr);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        dup2(file, descriptor_);
        close(file);
    }
    ~Redirected() {
        (void)std::fflush(nullptr);
        dup2(kept_, descriptor_);
        close(kept_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

  private:
    int descriptor_;
    int kept_;
};

class StandardStreams : public testing::Test {
  protected:
    // Runs as a command whose effect prints "banner", whose result is "result" and whose audio is "audio".
    void runCommand(ResultStream::Prints prints, ResultStream::Results results) {
        const Redirected output(STDOUT_FILENO, out_);
        const Redirected error(STDERR_FILENO, err_);
        ResultStream result(prints, results);
        std::puts("banner");
        (void)std::fflush(stdout);
        if (results == ResultStream::Results::ToStandardError) {
            ASSERT_EQ(write(originalStandardOutput(), "audio", 5), 5);
        }
        result.write("result");
    }

    test::TemporaryFolder folder_;
    std::string out_ = folder_.file("out");
    std::string err_ = folder_.file("err");
};

TEST_F(StandardStreams, OutputHoldsTheResultAlone) {
    runCommand(ResultStream::Prints::ToStandardError, ResultStream::Results::ToStandardOutput);
    EXPECT_EQ(test::readFile(out_), "result");
    EXPECT_EQ(test::readFile(err_), "banner\n");
}

TEST(OriginalStandardOutput, HasTwoNamesOnTheCommandLine) {
    EXPECT_TRUE(sonivex_tool::namesStandardOutput("-"));
    EXPECT_TRUE(sonivex_tool::namesStandardOutput("pipe:1"));
    for (const char* path : {"", "./-", "pipe:", "pipe:0", "pipe:12", "out.wav"})
        EXPECT_FALSE(sonivex_tool::namesStandardOutput(path)) << path;
}

TEST_F(StandardStreams, OutputHoldsTheAudioAloneWhenItCarriesAudio) {
    runCommand(ResultStream::Prints::Nowhere, ResultStream::Results::ToStandardError);
    EXPECT_EQ(test::readFile(out_), "audio");
    EXPECT_EQ(test::readFile(err_), "result");
}

}  // namespace
