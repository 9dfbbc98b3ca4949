// Sets the options of a filter from random texts, and compares each with a model.
//
//     SONIVEX_SEED     the seed of the texts; 1 if it is not set
//     SONIVEX_TEXTS    how many texts; 40000 if it is not set
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "filter/faults/filter_under_test.h"
#include "models/option_model.h"
#include "random_host/byte_source.h"

namespace test {
namespace {

unsigned long numberFrom(const char* variable, unsigned long otherwise) {
    const char* const given = std::getenv(variable);
    return given != nullptr ? std::stoul(given) : otherwise;
}

std::string space(ByteSource& bytes) {
    return bytes.oneIn(4) ? bytes.of<const char*>({" ", "\t", "\n", "\r", "  \n"}) : "";
}

std::string number(ByteSource& bytes) {
    std::string text = bytes.of<const char*>({"", "", "", "-"});
    text += bytes.of<const char*>({"0", "1", "2", "3", "4", "17", "2147483647", "2147483648",
                                   "9007199254740993", "18446744073709551616", "01", ""});
    text +=
        bytes.of<const char*>({"", "", "", ".0", ".5", ".00000000000000000001", ".", ".9999999999999999999"});
    return text + bytes.of<const char*>({"", "", "", "", "e0", "E+1", "e-1", "e400", "e-400", "e", "e+"});
}

std::string string(ByteSource& bytes) {
    std::string text = "\"";
    for (std::uint32_t left = bytes.below(4); left > 0; --left) {
        text += bytes.of<const char*>({"MegaBass",
                                       "3DSurround",
                                       "a",
                                       "\\n",
                                       "\\u0041",
                                       "\\u00e9",
                                       "\\uD83D\\uDE00",
                                       "\\uD83D",
                                       "\\uDE00",
                                       "\\x",
                                       "\xC3\xA9",
                                       "\xC0\x80",
                                       "\xED\xA0\x80",
                                       "\xF0\x9F\x98\x80",
                                       "\xF4\x90\x80\x80",
                                       "\x01",
                                       "\x7F",
                                       "\\\"",
                                       "{",
                                       ","});
    }
    return text + "\"";
}

std::string value(ByteSource& bytes, int depth);

std::string name(ByteSource& bytes) {
    return bytes.oneIn(8) ? string(bytes)
                          : bytes.of<const char*>({"\"enable_surround\"", "\"enable_dialoguenhance\"",
                                                   "\"enable_normalizer\"", "\"surround_effect_type\"",
                                                   "\"surround_mode\"", "\"surround_limiter\"",
                                                   "\"dialoguenhance_voice\"", "\"enable_dump\"",
                                                   "\"enable_surr\\u006fund\"", "\"Enable_surround\""});
}

std::string object(ByteSource& bytes, int depth) {
    std::string text = "{" + space(bytes);
    for (std::uint32_t left = bytes.below(6); left > 0; --left) {
        text += name(bytes) + space(bytes) + ":" + space(bytes) + value(bytes, depth) + space(bytes);
        if (left > 1) text += "," + space(bytes);
    }
    return text + "}";
}

std::string array(ByteSource& bytes, int depth) {
    std::string text = "[";
    for (std::uint32_t left = bytes.below(3); left > 0; --left) {
        text += value(bytes, depth);
        if (left > 1) text += ",";
    }
    return text + "]";
}

std::string value(ByteSource& bytes, int depth) {
    constexpr int kDeepest = 4;
    switch (bytes.below(16)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return "true";
        case 4:
            return "false";
        case 5:
            return "null";
        case 6:
            return depth < kDeepest ? object(bytes, depth + 1) : "{}";
        case 7:
            return depth < kDeepest ? array(bytes, depth + 1) : "[]";
        case 8:
        case 9:
            return "\"MegaBass\"";
        case 10:
            return "\"3DSurround\"";
        case 11:
            return string(bytes);
        default:
            return number(bytes);
    }
}

// Puts a byte in, takes one out or changes one.
void damage(std::string& text, ByteSource& bytes) {
    const std::size_t place = bytes.below(static_cast<std::uint32_t>(text.size()) + 1);
    const char byte = bytes.oneIn(2)
                          ? static_cast<char>(bytes.byte())
                          : bytes.of({'"', '{', '}', '[', ']', ':', ',', '\\', '0', '-', 'e', '.', ' '});
    switch (bytes.below(3)) {
        case 0:
            text.insert(place, 1, byte);
            break;
        case 1:
            text.erase(place, 1);
            break;
        default:
            if (place < text.size()) text[place] = byte;
    }
}

std::string randomText(ByteSource& bytes) {
    std::string text = bytes.oneIn(16) ? value(bytes, 0) : object(bytes, 0);
    text = space(bytes) + text + space(bytes);
    if (bytes.oneIn(3)) {
        for (std::uint32_t left = 1 + bytes.below(3); left > 0; --left) damage(text, bytes);
    }
    return text;
}

OptionState stateOf(FilterUnderTest& filter) {
    const bool dialogue = filter.field(Peer::kEnableDialogue);
    const bool surround = filter.field(Peer::kEnableSurround);
    const bool normalizer = filter.field(Peer::kEnableNormalizer);
    EXPECT_LE(int{dialogue} + int{surround} + int{normalizer}, 1);
    return {.surround_type = filter.field(Peer::kSurroundType),
            .surround_mode = filter.field(Peer::kSurroundMode),
            .surround_limiter = filter.field(Peer::kSurroundLimiter),
            .voice = filter.field(Peer::kVoice),
            .effect = dialogue     ? ModelEffect::kDialogue
                      : surround   ? ModelEffect::kSurround
                      : normalizer ? ModelEffect::kNormalizer
                                   : ModelEffect::kNone,
            .is_dumped = filter.field(Peer::kEnableDump)};
}

TEST(FilterOptionTexts, AreUnderstoodAsTheModelUnderstandsThem) {
    const unsigned long seed = numberFrom("SONIVEX_SEED", 1);
    const unsigned long texts = numberFrom("SONIVEX_TEXTS", 40'000);
    SeededBytes bytes(seed);
    FilterUnderTest filter;
    OptionModel model;
    unsigned long refused = 0;
    unsigned long changes = 0;
    for (unsigned long i = 0; i < texts; ++i) {
        const std::string text = randomText(bytes);
        const OptionState before = model.state();
        const bool is_taken = filter->setOption(Vorlin::filterPrototype::FILTER_OPTION, text, "");
        ASSERT_EQ(is_taken, model.set(text)) << "SONIVEX_SEED=" << seed << ", text " << i << ": " << text;
        ASSERT_TRUE(stateOf(filter) == model.state())
            << "SONIVEX_SEED=" << seed << ", text " << i << ": " << text;
        refused += is_taken ? 0 : 1;
        changes += model.state() == before ? 0 : 1;
    }
    EXPECT_GT(refused, texts / 10);
    EXPECT_GT(changes, texts / 10);
    RecordProperty("refused", std::to_string(refused));
    RecordProperty("changes", std::to_string(changes));
}

}  // namespace
}  // namespace test
