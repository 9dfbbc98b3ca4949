// The guide lists the calls that the other tests allow, no more and no less.
#include <gtest/gtest.h>

#include <set>
#include <span>
#include <sstream>
#include <string>

#include "real_time/traps/kept_calls.h"
#include "real_time/traps/kept_lists.h"
#include "support/processes/temporary_folder.h"

namespace {

using test::Kept;

// Returns the calls in the first column of the table below a heading of the guide.
std::set<std::string> callsBelow(const std::string& heading) {
    std::istringstream guide(test::readFile(SONIVEX_REAL_TIME_GUIDE));
    std::set<std::string> calls;
    bool is_below = false;
    for (std::string line; std::getline(guide, line);) {
        if (line.starts_with('#')) is_below = line == "## " + heading;
        if (!is_below || !line.starts_with("| `")) continue;
        std::istringstream column(line.substr(0, line.find('|', 1)));
        std::string between;
        for (std::string call; std::getline(column, between, '`') && std::getline(column, call, '`');)
            calls.insert(call);
    }
    return calls;
}

std::set<std::string> namesOf(std::span<const Kept> list) {
    std::set<std::string> names;
    for (const Kept call : list) names.emplace(nameOf(call));
    return names;
}

TEST(RealTimeGuide, ListsTheCallsThatTheTrapsLetPass) {
    EXPECT_EQ(callsBelow("A frame in the filter"), namesOf(test::kEachFrame));
    EXPECT_EQ(callsBelow("The first frame of a stream"), namesOf(test::kFirstFrame));
    EXPECT_EQ(callsBelow("A frame that is given up"), namesOf(test::kLostFrame));
    EXPECT_EQ(callsBelow("The worker between two frames"), namesOf(test::kBetweenFrames));
    EXPECT_EQ(callsBelow("A push of the framework"), namesOf(test::kEachPush));
    EXPECT_EQ(callsBelow("The first push of a stream"), namesOf(test::kFirstPush));
    EXPECT_EQ(callsBelow("A push while a worker works"), namesOf(test::kWatch));
    EXPECT_EQ(callsBelow("Dumps and log lines"), namesOf(test::joined(test::kDump, test::kLog)));
}

}  // namespace
