#include "vorlin/json_item.h"

#include <gtest/gtest.h>

#include <limits>

namespace Vorlin {
namespace {

using std::string_literals::operator""s;

TEST(JsonItem, ReadsMembersOfEveryType) {
    const VorlinJSONItem item(R"({"text": "wide", "count": -7, "on": true, "level": 2.5, "none": null})");
    EXPECT_TRUE(item.isValid());
    EXPECT_EQ(item.getString("text"), "wide");
    EXPECT_EQ(item.getInt("count"), -7);
    EXPECT_TRUE(item.getBool("on"));
    EXPECT_EQ(item.getDouble("level"), 2.5);
    EXPECT_EQ(item.getDouble("count"), -7.0);
    EXPECT_TRUE(item.hasItem("none"));
    EXPECT_FALSE(item.hasItem("absent"));
}

TEST(JsonItem, ReturnsTheFallbackForAMissingMember) {
    const VorlinJSONItem item("{}");
    EXPECT_EQ(item.getString("a", "x"), "x");
    EXPECT_EQ(item.getInt("a", 3), 3);
    EXPECT_TRUE(item.getBool("a", true));
    EXPECT_EQ(item.getDouble("a", 0.5), 0.5);
}

TEST(JsonItem, ReturnsTheFallbackForAMemberOfAnotherType) {
    const VorlinJSONItem item(R"({"s": "1", "n": 1, "b": true, "null": null, "o": {"n": 1}, "a": [1]})");
    for (const char* name : {"n", "b", "null", "o", "a"}) EXPECT_EQ(item.getString(name, "x"), "x") << name;
    for (const char* name : {"s", "b", "null", "o", "a"}) EXPECT_EQ(item.getInt(name, 9), 9) << name;
    for (const char* name : {"s", "n", "null", "o", "a"}) EXPECT_TRUE(item.getBool(name, true)) << name;
    for (const char* name : {"s", "b", "null", "o", "a"}) EXPECT_EQ(item.getDouble(name, 9.5), 9.5) << name;
}

TEST(JsonItem, ReturnsAnIntOnlyForAWholeNumberThatFits) {
    const auto read = [](const std::string& number) {
        return VorlinJSONItem(R"({"n":)" + number + "}").getInt("n", -99);
    };
    EXPECT_EQ(read("2147483647"), 2147483647);
    EXPECT_EQ(read("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(read("2.0"), 2);
    EXPECT_EQ(read("-0.0"), 0);
    EXPECT_EQ(read("1e3"), 1000);
    EXPECT_EQ(read("2147483647.0"), 2147483647);
    for (const char* number : {"2147483648", "-2147483649", "4294967298", "2147483648.0",
                               "9223372036854775808", "18446744073709551616", "-9223372036854775809", "1e300",
                               "1e999", "-1e999", "2.5", "1e-9", "-0.5"}) {
        EXPECT_EQ(read(number), VorlinJSONItem::kNoInt) << number;
    }
}

TEST(JsonItem, ClampsNumbersBeyondADoubleToTheLargestDouble) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    const auto read = [](const std::string& number) {
        const VorlinJSONItem item(R"({"s":"\"1e999\\","n":)" + number + R"(,"m":[-1e999,1e999],"last":7})");
        EXPECT_TRUE(item.isValid()) << number;
        EXPECT_EQ(item.getString("s"), "\"1e999\\") << "the parser must not change digits inside a string";
        EXPECT_EQ(item.getInt("last"), 7);
        return item.getDouble("n", 0.5);
    };
    for (const std::string& number : {"1e999"s, "1E+999"s, "1.5e309"s, "0.001e999999999999999999999"s,
                                      std::string(400, '9'), std::string(400, '9') + ".5"}) {
        EXPECT_EQ(read(number), kLargest) << number;
        EXPECT_EQ(read("-" + number), -kLargest) << number;
        EXPECT_TRUE(VorlinJSONItem(number).isValid()) << number;
    }
    EXPECT_EQ(read("1.7976931348623157e308"), kLargest);
    EXPECT_EQ(read("1e-999"), 0.0);
    EXPECT_EQ(read("0e999"), 0.0);
}

TEST(JsonItem, RejectsMalformedTextThatBeginsLikeAHugeNumber) {
    for (const char* text : {"1e999e1", "01e999", "+1e999", "1.e999", ".1e999", "--1e999", "1e999-1",
                             "1e+-999", "1e999x", "[1e999", "[1e999 2]", R"({"a":1e999,})", R"({1e999:1})",
                             "1e999 1e999", "1e999\"", "\"1e999", "1e", "-"}) {
        EXPECT_FALSE(VorlinJSONItem(text).isValid()) << text;
    }
}

TEST(JsonItem, ReadsATextFullOfNumbersBeyondADouble) {
    constexpr size_t kNumbers = 200'000;
    std::string text = R"({"a":[0)";
    for (size_t i = 0; i < kNumbers; ++i) text += ",1e999";
    const VorlinJSONItem item(text + R"(],"b":7})");
    EXPECT_EQ(item.getInt("b"), 7);
}

TEST(JsonItem, AcceptsAnyJsonValueButOnlyAnObjectHasMembers) {
    for (const char* text : {"1", "-2.5e3", "\"a\"", "null", "true", "[]", R"([{"a":1}])", " {} "}) {
        const VorlinJSONItem item(text);
        EXPECT_TRUE(item.isValid()) << text;
        EXPECT_FALSE(item.hasItem("a")) << text;
        EXPECT_EQ(item.getInt("a", 4), 4) << text;
    }
}

TEST(JsonItem, RejectsTextThatIsNotJson) {
    for (const std::string& text : {""s,
                                    " "s,
                                    "{"s,
                                    "}"s,
                                    "{]"s,
                                    R"({"a":1,})"s,
                                    R"({a:1})"s,
                                    "nul"s,
                                    "01"s,
                                    "1 2"s,
                                    "{} x"s,
                                    "NaN"s,
                                    "'a'"s,
                                    "// c\n{}"s,
                                    "{}\0"s,
                                    "{}\0{"s,
                                    "\"\0\""s,
                                    "\"\xff\""s,
                                    "\"\xc3(\""s,
                                    "\"\xed\xa0\x80\""s,
                                    "\"\xf4\x90\x80\x80\""s,
                                    "\"a"s,
                                    "\"\\ud800\""s}) {
        const VorlinJSONItem item(text);
        EXPECT_FALSE(item.isValid()) << testing::PrintToString(text);
        EXPECT_FALSE(item.hasItem("a")) << testing::PrintToString(text);
        EXPECT_EQ(item.getDouble("a", 0.5), 0.5) << testing::PrintToString(text);
    }
}

TEST(JsonItem, TakesTheLastOfSeveralMembersWithTheSameName) {
    EXPECT_EQ(VorlinJSONItem(R"({"a":1,"a":"x","a":3})").getInt("a"), 3);
}

TEST(JsonItem, SurvivesAHundredThousandNestedValues) {
    constexpr size_t kDepth = 100'000;
    const std::string open(kDepth, '[');
    EXPECT_FALSE(VorlinJSONItem(open).isValid());
    const VorlinJSONItem nested(R"({"a":)" + open + std::string(kDepth, ']') + R"(,"b":7})");
    EXPECT_TRUE(nested.isValid());
    EXPECT_EQ(nested.getInt("a", 5), 5);
    EXPECT_EQ(nested.getInt("b"), 7);
    std::string objects;
    for (size_t i = 0; i < kDepth; ++i) objects += R"({"a":)";
    EXPECT_FALSE(VorlinJSONItem(objects).isValid());
}

TEST(JsonItem, KeepsTextAsUtf8) {
    EXPECT_EQ(VorlinJSONItem(R"({"a":"\u00e9\n"})").getString("a"), "\xc3\xa9\n");
    EXPECT_TRUE(VorlinJSONItem("{\"\xc3\xa9\":1}").hasItem("\xc3\xa9"));
}

TEST(JsonItem, IsEmptyAfterAMove) {
    VorlinJSONItem from(R"({"a":1})");
    VorlinJSONItem to(std::move(from));
    EXPECT_EQ(to.getInt("a"), 1);
    EXPECT_FALSE(from.isValid());  // NOLINT(bugprone-use-after-move): the moved-from item must stay safe
    EXPECT_FALSE(from.hasItem("a"));
    EXPECT_EQ(from.getString("a", "x"), "x");

    VorlinJSONItem other(R"({"b":2})");
    other = std::move(to);
    EXPECT_EQ(other.getInt("a"), 1);
    EXPECT_FALSE(other.hasItem("b"));
    EXPECT_FALSE(to.isValid());  // NOLINT(bugprone-use-after-move)
    EXPECT_FALSE(to.hasItem("a"));
}

}  // namespace
}  // namespace Vorlin
