// The ways in which a system call fails on the command line, and the exit codes that may follow.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace test {

/** A failing system call: see failing_system.cpp. */
struct Fault {
    std::string call;
    std::string manner;
    std::string result;
    std::set<int> exit_codes;       // of a run that it ends
    bool must_be_reported = false;  // no run may succeed, because an output did not arrive

    std::string name() const { return call + " " + manner + " " + result; }
};

/** Returns all faults, those of one call after one another. */
std::vector<Fault> everyFault();

/** Returns the first fault of each call. */
std::vector<Fault> oneFaultOfEachCall();

}  // namespace test
