// Makes every request for memory of a piece of work fail in turn.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "failing_calls/failing_memory.h"

namespace test {

/** Returns whether the environment asks for every call to fail in turn. */
inline bool failsEveryCall() {
    return std::getenv("SONIVEX_EVERY_CALL") != nullptr;
}

/** Returns the distance between the requests that fail in turn: 1 if the environment asks for every one of
 *  them, otherwise `usual`. */
inline int sweepStride(int usual) {
    return failsEveryCall() ? 1 : usual;
}

/** Counts the work of a sweep. */
struct Sweep {
    int requests = 0;  // of the work when none fails
    int runs = 0;      // with a failing request
};

/** Runs `work(memory)` without a failing request, then again and again with requests that fail in turn, once
 *  and from then on. Stops at the first run with a failed expectation and names it.
 *  @param stride distance between the requests that fail, see sweepStride. */
template <typename Work>
Sweep failEveryRequest(int stride, const Work& work) {
    Sweep sweep;
    for (int run = 0; run < 2; ++run) {  // the first one also makes what libraries keep for ever
        FailingMemory memory(0, FailingMemory::Which::kOne);
        SCOPED_TRACE("no request fails");
        work(memory);
        sweep.requests = memory.requests();
    }
    EXPECT_GT(sweep.requests, 0) << "the work asks for no memory";
    for (const auto which : {FailingMemory::Which::kOne, FailingMemory::Which::kAllFromThere}) {
        for (int first = 1; first <= sweep.requests; first += stride) {
            if (testing::Test::HasFailure()) return sweep;
            FailingMemory memory(first, which);
            SCOPED_TRACE("request " + std::to_string(first) + " of " + std::to_string(sweep.requests) +
                         (which == FailingMemory::Which::kOne ? "" : " and all after it"));
            work(memory);
            ++sweep.runs;
            EXPECT_TRUE(memory.hasFailed()) << "the work differs from run to run";
        }
    }
    return sweep;
}

}  // namespace test
