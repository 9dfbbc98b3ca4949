#include "key_reader.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using sonivex_tool::KeyReader;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(KeyReader, NamesCharactersAndSequences) {
    KeyReader reader;
    EXPECT_THAT(reader.read("eV+ \r\033[A\033[B\033[C\033[D\033OD\033[5~\033[6~q"),
                ElementsAre("e", "V", "+", "space", "enter", "up", "down", "right", "left", "left", "pageup",
                            "pagedown", "q"));
}

TEST(KeyReader, ReadsTheSameHoweverTheBytesAreCut) {
    const std::string too_long = "\033[1234567890;1234567890\033[C";
    const std::string bytes = "e\033[D\033[6~n\033[1;5Cq" + too_long;
    const auto whole = KeyReader().read(bytes);
    EXPECT_THAT(whole, ElementsAre("e", "left", "pagedown", "n", "q", "right"));
    for (size_t cut = 1; cut < bytes.size(); ++cut) {
        KeyReader reader;
        auto keys = reader.read(bytes.substr(0, cut));
        const auto rest = reader.read(bytes.substr(cut));
        keys.insert(keys.end(), rest.begin(), rest.end());
        EXPECT_EQ(keys, whole) << "cut at " << cut;
    }
}

TEST(KeyReader, LeavesOutUnknownSequencesAndControlCharacters) {
    KeyReader reader;
    EXPECT_THAT(reader.read("\033[15~\t\001\033[Hx"), ElementsAre("x"));
}

TEST(KeyReader, AnEndlessSequenceDoesNotSwallowLaterKeys) {
    KeyReader reader;
    EXPECT_THAT(reader.read("\033[" + std::string(100, '1')), IsEmpty());
    EXPECT_THAT(reader.read("q"), ElementsAre("q"));
}

}  // namespace
