#include "screen_lines.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "level_bar.h"

namespace {

using sonivex_tool::levelBar;
using sonivex_tool::ScreenContents;
using sonivex_tool::screenLines;
using sonivex_tool::statusLine;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

ScreenContents contents() {
    ScreenContents contents;
    contents.title = "song.flac";
    contents.stream = "flac, 48000 Hz, stereo";
    contents.card = "default sound card";
    contents.position_s = 61.5;
    contents.length_s = 123.0;
    contents.effect = "surround (MegaBass, mode 2)";
    contents.original = {.short_term_lufs = -23.04, .peak_dbfs = -6.0, .gain_db = -1.25};
    contents.processed = {.short_term_lufs = -20.0, .peak_dbfs = -3.0, .gain_db = -3.0};
    contents.volume_db = -4.0;
    contents.cpu_share = 0.0123;
    contents.guard = "idle without --fps";
    contents.gaps = 7;
    contents.events = {"0:01  first", "0:02  second"};
    return contents;
}

TEST(ScreenLines, ShowsEveryFigure) {
    const auto lines = screenLines(contents(), 100, 30);
    for (const char* text :
         {"1:01 / 2:03", "surround (MegaBass, mode 2)", "-23.0 LUFS", "-20.0 LUFS", "-6.0 dBFS", "-3.0 dBFS",
          "volume -4 dB", "1.2 % of a processor", "gaps 7", "idle without --fps", "song.flac",
          "flac, 48000 Hz, stereo", "default sound card", "0:02  second", "q quit"}) {
        EXPECT_THAT(lines, Contains(HasSubstr(text)));
    }
}

TEST(ScreenLines, TellsWhichOfBothIsHeard) {
    ScreenContents shown = contents();
    EXPECT_THAT(screenLines(shown, 100, 30), Contains(HasSubstr("> effect")));
    EXPECT_THAT(screenLines(shown, 100, 30), Contains(HasSubstr("EFFECT ")));
    shown.hears_effect = false;
    EXPECT_THAT(screenLines(shown, 100, 30), Contains(HasSubstr("> original")));
    EXPECT_THAT(screenLines(shown, 100, 30), Contains(HasSubstr("ORIGINAL ")));
}

TEST(ScreenLines, FitsIntoEveryTerminal) {
    for (int columns : {1, 2, 7, 20, 55, 80, 133, 500}) {
        for (int rows : {1, 2, 3, 9, 13, 14, 24, 100}) {
            const auto lines = screenLines(contents(), columns, rows);
            EXPECT_LE(lines.size(), static_cast<size_t>(rows));
            EXPECT_FALSE(lines.empty());
            for (const auto& line : lines) EXPECT_LE(line.size(), static_cast<size_t>(columns)) << line;
        }
    }
    EXPECT_THAT(screenLines(contents(), 0, 10), IsEmpty());
    EXPECT_THAT(screenLines(contents(), 10, 0), IsEmpty());
}

TEST(ScreenLines, ASmallTerminalShowsPositionAndEffectFirst) {
    const auto lines = screenLines(contents(), 40, 2);
    EXPECT_THAT(lines[0], HasSubstr("1:01 / 2:03"));
    EXPECT_THAT(lines[1], HasSubstr("EFFECT"));
}

TEST(ScreenLines, TheNewestEventsAreKept) {
    ScreenContents shown = contents();
    shown.events.assign(50, "old");
    shown.events.emplace_back("newest");
    const auto lines = screenLines(shown, 80, 20);
    EXPECT_EQ(lines.back(), "newest");
    EXPECT_EQ(lines.size(), 20U);
}

TEST(ScreenLines, AFileNameCannotControlTheTerminal) {
    ScreenContents shown = contents();
    shown.title = "evil\033[2Jname\n";
    EXPECT_THAT(screenLines(shown, 100, 30), Contains("evil?[2Jname?"));
}

TEST(ScreenLines, DoesNotCutACharacterOfSeveralBytes) {
    ScreenContents shown = contents();
    shown.title = "äöü";
    EXPECT_THAT(screenLines(shown, 2, 30), Contains("äö"));
}

TEST(ScreenLines, CountsTheColumnsOfWideAndCombiningCharacters) {
    ScreenContents shown = contents();
    shown.title = "音楽音楽";  // of two columns each
    EXPECT_THAT(screenLines(shown, 5, 30), Contains("音楽"));
    EXPECT_THAT(screenLines(shown, 6, 30), Contains("音楽音"));
    shown.title = "e\u0301e\u0301e\u0301";
    EXPECT_THAT(screenLines(shown, 2, 30), Contains("e\u0301e\u0301"));
}

TEST(ScreenLines, ReplacesControlCharactersOfTwoBytesAndWhatIsNoText) {
    ScreenContents shown = contents();
    shown.title = "a\u009B2Jb";  // what some terminals take for "\033[2J"
    EXPECT_THAT(screenLines(shown, 100, 30), Contains("a?2Jb"));
    shown.title =
        "a\x9B\xFF"
        "b\xC3";
    EXPECT_THAT(screenLines(shown, 100, 30), Contains("a??b?"));
}

TEST(ScreenLines, DoNotShowALengthThatThePositionHasPassed) {
    ScreenContents shown = contents();
    shown.length_s = 59.0;
    EXPECT_THAT(screenLines(shown, 100, 30)[0], AllOf(HasSubstr("1:01"), Not(HasSubstr("/"))));
    EXPECT_THAT(statusLine(shown), Not(HasSubstr("1:01 /")));
    shown.length_s = 61.0;  // an effect rings out
    EXPECT_THAT(screenLines(shown, 100, 30)[0], HasSubstr("1:01 / 1:01"));
}

TEST(StatusLine, IsOneLineWithoutControlCharacters) {
    const std::string line = statusLine(contents());
    EXPECT_TRUE(
        std::none_of(line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }));
    EXPECT_THAT(line, HasSubstr("1:01 / 2:03"));
    EXPECT_THAT(line, HasSubstr("gaps 7"));
}

TEST(LevelBar, FillsInProportion) {
    EXPECT_EQ(levelBar(-30.0, std::nullopt, -60.0, 0.0, 10), "=====.....");
    EXPECT_EQ(levelBar(-30.0, -12.0, -60.0, 0.0, 10), "=====...|.");
    EXPECT_EQ(levelBar(std::nullopt, std::nullopt, -60.0, 0.0, 4), "....");
    EXPECT_EQ(levelBar(6.0, 6.0, -60.0, 0.0, 4), "===|");
    EXPECT_EQ(levelBar(-99.0, -99.0, -60.0, 0.0, 4), "....");
    EXPECT_EQ(levelBar(0.0, 0.0, -60.0, 0.0, 0), "");
}

}  // namespace
