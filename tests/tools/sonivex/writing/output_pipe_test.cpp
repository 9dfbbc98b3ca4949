#include "output_pipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <string>

#include "failure.h"

namespace {

using namespace sonivex_tool;
using testing::HasSubstr;

TEST(OutputPipe, RefusesATerminal) {
    int terminal = -1;
    int program_side = -1;
    ASSERT_EQ(openpty(&terminal, &program_side, nullptr, nullptr, nullptr), 0);
    try {
        const OutputPipe pipe(program_side);
        ADD_FAILURE() << "it takes a terminal";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::OutputNotWritable);
        EXPECT_THAT(failure.what(), HasSubstr("it is a terminal; redirect it to a file or a pipe"));
    }
    close(program_side);
    close(terminal);
}

TEST(OutputPipe, CannotBeSought) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    OutputPipe pipe(ends[1]);
    EXPECT_EQ(pipe.io()->seekable & AVIO_SEEKABLE_NORMAL, 0);
    avio_write(pipe.io(), reinterpret_cast<const unsigned char*>("text"), 4);
    avio_flush(pipe.io());  // a place that is still in the buffer could be sought
    EXPECT_LT(avio_seek(pipe.io(), 0, SEEK_SET), 0);
    EXPECT_NO_THROW(pipe.commit());
    std::array<char, 16> bytes{};
    EXPECT_EQ(read(ends[0], bytes.data(), bytes.size()), 4);
    EXPECT_STREQ(bytes.data(), "text");
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
