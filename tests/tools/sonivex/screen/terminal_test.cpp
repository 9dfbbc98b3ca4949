// A program that ends in the midst of its work, on a terminal of its own, and terminals that give no keys.
#include "terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <new>
#include <stdexcept>
#include <string>

#include "failure.h"
#include "last_words.h"

namespace {

using sonivex_tool::Terminal;
using sonivex_tool::TerminalUse;
using testing::HasSubstr;

constexpr char kLeaveScreen[] = "\033[?1049l";

[[noreturn]] void endWithoutMemory() {
    throw std::bad_alloc();
}

[[noreturn]] void endWithoutSpaceForSoMuch() {
    throw std::bad_array_new_length();
}

[[noreturn]] void endByMistake() {
    throw std::logic_error("a mistake");
}

// No exception may leave this function, nor the test framework see it.
void callWhereNothingMayLeave(void (*end)()) noexcept {
    end();
}

struct End {
    std::string shown;  // on the terminal
    int status = 0;     // of waitpid
    bool has_line_mode = false;
};

// Runs a program that shows a screen on a new terminal and then ends by `end`.
End endOnATerminal(void (*end)()) {
    int terminal = -1;
    int program_side = -1;
    if (openpty(&terminal, &program_side, nullptr, nullptr, nullptr) != 0)
        throw std::runtime_error("no terminal");
    const pid_t child = fork();
    if (child == 0) {
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(program_side, descriptor);
        close(terminal);
        sonivex_tool::explainLackOfMemoryAtTheEnd();
        const Terminal screen(STDIN_FILENO, STDOUT_FILENO, TerminalUse::KeysAndScreen);
        callWhereNothingMayLeave(end);
        _exit(0);
    }
    End seen;
    waitpid(child, &seen.status, 0);
    termios settings{};
    tcgetattr(program_side, &settings);
    seen.has_line_mode = (settings.c_lflag & ICANON) != 0 && (settings.c_lflag & ECHO) != 0;
    close(program_side);
    std::array<char, 1024> bytes{};
    for (ssize_t count; (count = read(terminal, bytes.data(), bytes.size())) > 0;)
        seen.shown.append(bytes.data(), static_cast<size_t>(count));
    close(terminal);
    return seen;
}

TEST(TerminalOfAProgramWithoutMemory, IsGivenBackAndShowsWhy) {
    for (void (*const end)() : {&endWithoutMemory, &endWithoutSpaceForSoMuch}) {
        const End seen = endOnATerminal(end);
        EXPECT_TRUE(WIFEXITED(seen.status) && WEXITSTATUS(seen.status) == 1) << seen.status;
        EXPECT_TRUE(seen.has_line_mode);
        EXPECT_THAT(seen.shown, HasSubstr(std::string(kLeaveScreen) + "sonivex: out of memory"));
    }
}

TEST(TerminalOfAProgramThatAborts, IsGivenBack) {
    const End seen = endOnATerminal(&endByMistake);
    EXPECT_TRUE(WIFSIGNALED(seen.status) && WTERMSIG(seen.status) == SIGABRT) << seen.status;
    EXPECT_TRUE(seen.has_line_mode);
    EXPECT_THAT(seen.shown, HasSubstr(kLeaveScreen));
}

TEST(Terminal, RefusesKeysThatComeFromNoTerminal) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    try {
        const Terminal keys(ends[0], -1, TerminalUse::Keys);
        ADD_FAILURE() << "it takes keys from a pipe";
    } catch (const sonivex_tool::Failure& failure) {
        EXPECT_STREQ(failure.what(), "cannot read keys: standard input is not a terminal");
    }
    close(ends[0]);
    close(ends[1]);
}

TEST(Terminal, EndsWhenItHangsUp) {
    int terminal = -1;
    int program_side = -1;
    ASSERT_EQ(openpty(&terminal, &program_side, nullptr, nullptr, nullptr), 0);
    {
        Terminal keys(program_side, -1, TerminalUse::Keys);
        EXPECT_EQ(keys.read(0), "");
        EXPECT_FALSE(keys.hasEnded());
        close(terminal);
        EXPECT_EQ(keys.read(0), "");
        EXPECT_TRUE(keys.hasEnded());
    }
    close(program_side);
}

// The system calls such keys ready, and has none to read.
TEST(Terminal, EndsWithADescriptorThatIsGone) {
    int terminal = -1;
    int program_side = -1;
    ASSERT_EQ(openpty(&terminal, &program_side, nullptr, nullptr, nullptr), 0);
    Terminal keys(program_side, -1, TerminalUse::Keys);
    close(program_side);
    EXPECT_EQ(keys.read(0), "");
    EXPECT_TRUE(keys.hasEnded());
    close(terminal);
}

}  // namespace
