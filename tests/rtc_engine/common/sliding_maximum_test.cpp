#include "sliding_maximum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "support/signals/signals.h"

namespace {

TEST(SlidingMaximum, FindsTheLargestOfTheWindowForEveryWindowLength) {
    for (int depth = 1; depth <= 8; ++depth) {
        const int leaves = 1 << depth;
        SCOPED_TRACE("leaves " + std::to_string(leaves));
        std::vector<float> tree(static_cast<std::size_t>(2 * leaves), 0.0F);
        std::deque<float> window;
        test::Random random(17);
        int leaf = random.between(0, leaves - 1);
        for (int step = 0; step < 5000; ++step) {
            // Few distinct values produce ties; long decays let old maxima leave the window.
            const float value = static_cast<float>(random.between(0, 9) * (1000 - step % 1000));
            window.push_back(value);
            if (window.size() > static_cast<std::size_t>(leaves)) window.pop_front();
            ASSERT_EQ(sonivex::insertIntoMaximumTree(tree.data(), leaf, value, depth, leaves),
                      *std::max_element(window.begin(), window.end()))
                << "step " << step;
            leaf = (leaf + 1) % leaves;
        }
    }
}

TEST(SlidingMaximum, StoresTheTreeLevelsOneAfterTheOtherFromTheLeavesUp) {
    std::vector<float> tree(128, 0.0F);
    sonivex::insertIntoMaximumTree(tree.data(), 37, 5.0F, 6, 64);
    std::vector<std::size_t> written;
    for (std::size_t i = 0; i < tree.size(); ++i) {
        if (tree[i] != 0.0F) written.push_back(i);
    }
    EXPECT_EQ(written, (std::vector<std::size_t>{0 + 37, 64 + 18, 96 + 9, 112 + 4, 120 + 2, 124 + 1}));
}

}  // namespace
