#include <gtest/gtest.h>

#include <string>

#include "bounded_queue.h"
#include "failing_calls/failing_memory.h"

namespace {

TEST(BoundedQueueWithoutMemory, CanBeAbandoned) {
    sonivex_tool::BoundedQueue<std::string> queue(4);
    queue.push(std::string(100, 'x'));
    test::FailingMemory memory(1, test::FailingMemory::Which::kAllFromThere);
    memory.during([&] { queue.abandon(); });
    EXPECT_EQ(memory.requests(), 0);
    EXPECT_FALSE(queue.pop());
    EXPECT_FALSE(queue.push("late"));
}

}  // namespace
