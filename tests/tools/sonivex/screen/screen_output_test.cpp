#include "screen_output.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <string>

namespace {

using sonivex_tool::ScreenOutput;

// The terminal of the test, which no process has as its controlling one.
class ScreenOutputTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(openpty(&terminal_, &program_side_, nullptr, nullptr, nullptr), 0); }
    void TearDown() override {
        close(program_side_);
        close(terminal_);
    }

    std::string shown() const {
        std::array<char, 64> bytes{};
        const ssize_t count = read(terminal_, bytes.data(), bytes.size());
        return {bytes.data(), count > 0 ? static_cast<size_t>(count) : 0};
    }

    int terminal_ = -1;
    int program_side_ = -1;
};

TEST_F(ScreenOutputTest, OpensATerminalThatDoesNotControlTheProgramByItsName) {
    ScreenOutput output(program_side_);
    ASSERT_TRUE(output.isOpen());
    EXPECT_NE(output.descriptor(), program_side_);
    output.show("first");
    EXPECT_EQ(shown(), "first");
    EXPECT_TRUE(output.finish("last"));
    EXPECT_EQ(shown(), "last");
}

TEST_F(ScreenOutputTest, OpensNothingThatIsNoTerminal) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    for (const int descriptor : {ends[1], -1}) {
        ScreenOutput output(descriptor);
        EXPECT_FALSE(output.isOpen());
        output.show("text");
        EXPECT_TRUE(output.finish("text"));
    }
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
