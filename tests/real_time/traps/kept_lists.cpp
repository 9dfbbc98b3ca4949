#include "real_time/traps/kept_lists.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace test {

std::vector<Kept> joined(std::span<const Kept> first, std::span<const Kept> second) {
    std::vector<Kept> both(first.begin(), first.end());
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

void expectEachIsTrapped(std::size_t (*pass)(), std::span<const Kept> list, std::span<const Kept> others) {
    for (const Kept call : list) {
        SCOPED_TRACE(nameOf(call));
        if (call == Kept::kClock && !canTrapSystemCalls()) continue;  // it is a system call and nothing else
        const auto pass_without_the_call = [&] {
            KeptCalls kept(list);
            kept.add(others);
            kept.remove(call);
            pass();
            _exit(0);
        };
        EXPECT_EXIT(pass_without_the_call(), testing::ExitedWithCode(test::kTrapExitCode),
                    "Real-time violation");
    }
}

}  // namespace test
