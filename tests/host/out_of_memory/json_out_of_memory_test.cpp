// Reading options without memory throws std::bad_alloc and leaks nothing. It never ends the process.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "failing_calls/sweep.h"
#include "vorlin/json_item.h"

namespace test {
namespace {

// Everything that the parser can meet: every type of value, nesting, escapes, numbers that are read twice.
constexpr char kText[] =
    R"({"a name longer than a short string": "a text longer than a short string", "flag": true, "none": null,
        "int": 3, "nested": {"int": 4, "list": [1, [2, {"deep": "\u00e4"}]]}, "huge": 1e999, "half": 0.5,
        "list": [1, 2, 3], "int": 5})";

// @return false if memory ran out.
bool readEverything(const std::string& text, const std::string& name) try {
    const Vorlin::VorlinJSONItem item(text);
    const std::string value = item.getString(name);
    EXPECT_TRUE(item.isValid());
    EXPECT_EQ(value, "a text longer than a short string");
    EXPECT_EQ(item.getInt("int"), 5);
    EXPECT_TRUE(item.getBool("flag"));
    EXPECT_EQ(item.getDouble("half"), 0.5);
    EXPECT_EQ(item.getInt("huge"), Vorlin::VorlinJSONItem::kNoInt);
    EXPECT_TRUE(item.hasItem("nested") && item.hasItem("list") && item.hasItem("none"));
    EXPECT_FALSE(item.hasItem("deep"));
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

TEST(JsonOutOfMemory, ThrowsAndLeaksNothingWhicheverRequestFails) {
    int thrown = 0;
    const std::string text = kText;
    const std::string name = "a name longer than a short string";
    const Sweep sweep = failEveryRequest(1, [&](FailingMemory& memory) {
        const bool is_read = memory.during([&] { return readEverything(text, name); });
        EXPECT_EQ(is_read, !memory.hasFailed());
        thrown += is_read ? 0 : 1;
        EXPECT_EQ(memory.alive(), 0);
    });
    EXPECT_EQ(thrown, sweep.runs);
    EXPECT_GT(sweep.runs, 50);
}

}  // namespace
}  // namespace test
