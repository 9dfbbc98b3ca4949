// The generator without memory.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "failing_calls/failing_memory.h"

namespace {

constexpr char kOutOfMemory[] = "x.sofa: out of memory\n";
constexpr char kMissing[] = "x.sofa: cannot be read as a SOFA file: No such file or directory\n";

TEST(IrgenCommandWithoutMemory, ExitsWithCodeThreeAndSaysSo) {
    // Names as short as these need no memory of their own.
    const std::vector<std::string> arguments = {"--sofa", "x.sofa", "--out", "x.cpp"};
    const std::string default_sofa;
    int without_memory = 0;
    for (int first = 1;; ++first) {
        // The streams have room for the message, so that only the command itself asks for memory.
        std::ostringstream out(std::string(200, ' '));
        std::ostringstream err(std::string(200, ' '));
        test::FailingMemory memory(first, test::FailingMemory::Which::kOne);
        const int exit_code =
            memory.during([&] { return sonivex_irgen::runCommand(arguments, default_sofa, out, err); });
        if (!memory.hasFailed()) break;
        EXPECT_EQ(exit_code, 3);
        const std::string text = err.str().substr(0, err.str().find_last_not_of(' ') + 1);
        EXPECT_TRUE(text == kOutOfMemory || text == kMissing || text.find("memory") != std::string::npos)
            << text;
        if (text == kOutOfMemory) ++without_memory;
    }
    EXPECT_GT(without_memory, 0);
}

}  // namespace
