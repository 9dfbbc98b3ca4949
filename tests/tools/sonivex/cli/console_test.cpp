#include "console.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "support/clocks/virtual_clock.h"

namespace {

using sonivex_tool::Console;
using sonivex_tool::FileCounts;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(Console, FormatsTimesAsHoursMinutesAndSeconds) {
    EXPECT_EQ(sonivex_tool::clockTime(0.0), "0:00");
    EXPECT_EQ(sonivex_tool::clockTime(65.9), "1:05");
    EXPECT_EQ(sonivex_tool::clockTime(3723.0), "1:02:03");
    EXPECT_EQ(sonivex_tool::clockTime(-1.0), "0:00");
}

// Sends standard error elsewhere while it lives.
class StandardErrorTo {
  public:
    explicit StandardErrorTo(int descriptor) : before_(dup(STDERR_FILENO)) {
        dup2(descriptor, STDERR_FILENO);
    }
    ~StandardErrorTo() {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }
    StandardErrorTo(const StandardErrorTo&) = delete;
    StandardErrorTo& operator=(const StandardErrorTo&) = delete;

  private:
    int before_;
};

// Two connected descriptors. The program writes to one, and the test reads from the other.
struct Line {
    int test_side = -1;
    int program_side = -1;

    ~Line() {
        close(test_side);
        close(program_side);
    }
    // Returns all that was written up to `end`. A terminal hands each write on a little later, so one read
    // may return a part of them.
    std::string writtenUpTo(const std::string& end) const {
        std::string text;
        std::array<char, 4096> bytes{};
        while (text.find(end) == std::string::npos) {
            const ssize_t count = read(test_side, bytes.data(), bytes.size());
            if (count <= 0) break;
            text.append(bytes.data(), static_cast<size_t>(count));
        }
        return text;
    }
};

class ConsoleProgress : public testing::Test {
  protected:
    // Returns what a console shows on a terminal of 80 columns.
    template <typename Work>
    std::string shownOnATerminal(Work work) {
        winsize size{};
        size.ws_col = 80;
        Line line;
        if (openpty(&line.test_side, &line.program_side, nullptr, nullptr, &size) != 0)
            throw std::runtime_error("no terminal");
        return shown(line, work);
    }

    // Returns what a console writes where there is no terminal.
    template <typename Work>
    std::string writtenToAPipe(Work work) {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
        const Line line{ends[0], ends[1]};
        return shown(line, work);
    }

    test::VirtualClock clock_;

  private:
    template <typename Work>
    static std::string shown(const Line& line, Work work) {
        const StandardErrorTo redirected(line.program_side);
        Console console(false);
        work(console);
        // Without an end of its own, nothing written would make the test wait for ever.
        console.note("the end");
        return line.writtenUpTo("the end");
    }
};

TEST_F(ConsoleProgress, OnATerminalIsABarWithThePartThatIsDone) {
    const std::string shown = shownOnATerminal([this](Console& console) {
        clock_.wait(milliseconds(500));
        console.progress(15.0, 60.0);
    });
    EXPECT_THAT(shown, StartsWith("\r[" + std::string(10, '=') + std::string(30, ' ') +
                                  "] 25 %  0:15/1:00  30 x real time\033[K"));
}

TEST_F(ConsoleProgress, OnATerminalHasNoBarIfTheLengthIsUnknown) {
    for (const std::optional<double> total : {std::optional<double>(), std::optional<double>(0.0)}) {
        const std::string shown = shownOnATerminal([&](Console& console) {
            clock_.wait(seconds(1));
            console.progress(15.0, total);
        });
        EXPECT_THAT(shown, StartsWith("\r0:15  15 x real time\033[K"));
    }
}

TEST_F(ConsoleProgress, OnATerminalIsRedrawnAtMostEveryTenthOfASecond) {
    const std::string shown = shownOnATerminal([this](Console& console) {
        clock_.wait(milliseconds(99));
        console.progress(1.0, std::nullopt);
        clock_.wait(milliseconds(1));
        console.progress(2.0, std::nullopt);
        clock_.wait(milliseconds(99));
        console.progress(3.0, std::nullopt);
    });
    EXPECT_THAT(shown, StartsWith("\r0:02"));
    EXPECT_THAT(shown, Not(HasSubstr("0:03")));
}

TEST_F(ConsoleProgress, OfManyFilesOnATerminalIsABarOfFiles) {
    const std::string shown = shownOnATerminal([this](Console& console) {
        clock_.wait(seconds(1));
        console.progress(FileCounts{.done = 3, .total = 4, .failed = 1, .running = 1});
    });
    EXPECT_THAT(shown, StartsWith("\r[" + std::string(30, '=') + std::string(10, ' ') +
                                  "] 75 %  3/4 files, 1 failed, 1 running\033[K"));
}

TEST_F(ConsoleProgress, ElsewhereIsALineAtMostEveryFiveSeconds) {
    const std::string written = writtenToAPipe([this](Console& console) {
        clock_.wait(milliseconds(4999));
        console.progress(10.0, 60.0);
        clock_.wait(milliseconds(1));
        console.progress(20.0, 60.0);
        clock_.wait(seconds(5));
        console.progress(30.0, std::nullopt);
    });
    EXPECT_EQ(written, "0:20 of 1:00, 4 x real time\n0:30, 3 x real time\nthe end\n");
}

TEST_F(ConsoleProgress, OfManyFilesElsewhereIsALineWithTheirCounts) {
    const std::string written = writtenToAPipe([this](Console& console) {
        clock_.wait(seconds(5));
        console.progress(FileCounts{.done = 3, .total = 4, .failed = 1, .running = 2});
        clock_.wait(seconds(5));
        console.progress(FileCounts{.done = 0, .total = 1});
    });
    EXPECT_EQ(written, "3 of 4 files, 1 failed, 2 running\n0 of 1 file\nthe end\n");
}

TEST_F(ConsoleProgress, GivesWayToANote) {
    const std::string shown = shownOnATerminal([this](Console& console) {
        clock_.wait(seconds(1));
        console.progress(15.0, std::nullopt);
    });
    EXPECT_THAT(shown, HasSubstr("\033[K\r\033[Kthe end"));
}

}  // namespace
