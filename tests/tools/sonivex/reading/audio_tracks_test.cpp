#include "audio_tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio_source.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;

// Returns the languages of a file whose two tones have these tags.
std::vector<std::string> languagesOf(const std::string& first, const std::string& second) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("two.mkv");
    const auto made = test::runProcess({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i",
                                        "sine=duration=0.5", "-map", "0:a", "-map", "0:a", "-metadata:s:a:0",
                                        "language=" + first, "-metadata:s:a:1", "language=" + second, path});
    EXPECT_EQ(made.exit_code, 0) << made.err;
    std::vector<std::string> languages;
    for (const char* number : {"0", "1"}) {
        InputSettings settings;
        settings.path = path;
        settings.stream = number;
        languages.push_back(AudioSource(settings).info().language);
    }
    return languages;
}

TEST(AudioTracks, HaveTheLanguagesOfTheirTags) {
    EXPECT_THAT(languagesOf("eng", "de-CH"), ElementsAre("eng", "de-CH"));
}

TEST(AudioTracks, HaveNoLanguageThatIsUndetermined) {
    EXPECT_THAT(languagesOf("und", "fra"), ElementsAre("", "fra"));
}

TEST(AudioTracks, ShowATagOfSeveralLinesAsOneLine) {
    EXPECT_THAT(languagesOf("en\nERROR: x", "a\tb\x1b[1m\x7f"), ElementsAre("en ERROR: x", "a b [1m "));
    EXPECT_EQ(asOneLine("fran\xC3\xA7"
                        "ais"),
              "fran\xC3\xA7"
              "ais");
}

}  // namespace
