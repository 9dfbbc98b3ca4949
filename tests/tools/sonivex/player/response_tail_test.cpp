#include "response_tail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "responses_tables.h"

namespace {

using sonivex_tool::FilterOptions;
using sonivex_tool::findEffect;
using sonivex_tool::findResponseSet;

int64_t longestOf(const std::string& set_name) {
    std::size_t longest = 0;
    for (const auto& source : findResponseSet(set_name)->sources) {
        longest = std::max({longest, source.left.samples.size(), source.right.samples.size()});
    }
    return static_cast<int64_t>(longest);
}

TEST(ResponseTail, HasTheLengthOfTheCompiledInResponses) {
    const auto& surround = *findEffect("surround");
    FilterOptions options;
    options.surround_type = "3DSurround";
    EXPECT_EQ(responseTailFrames(surround, options, 2), longestOf("cingo"));
    EXPECT_EQ(responseTailFrames(surround, options, 6), longestOf("bingo-5.1"));
    EXPECT_EQ(responseTailFrames(surround, options, 8), longestOf("bingo-7.1"));
    options.surround_type = "MegaBass";
    for (const auto& [layout, channels] : {std::pair{"2.0", 2}, std::pair{"5.1", 6}, std::pair{"7.1", 8}}) {
        for (const char* mode : {"-mode1", "-mode2", "-mode3"}) {
            // A cascade of two responses is one sample shorter than their lengths together.
            EXPECT_EQ(responseTailFrames(surround, options, channels),
                      longestOf(std::string(layout) + mode) + longestOf("audio") - 1);
        }
    }
}

}  // namespace
