#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

class RenderMetadata : public test::RenderTest {
  protected:
    // Returns the tags of a file and its first stream, with lower-case names.
    nlohmann::json tagsOf(const std::string& name) {
        const auto description = test::probe(file(name));
        nlohmann::json tags = nlohmann::json::object();
        for (const auto& from : {description["format"], description["streams"][0]}) {
            if (!from.contains("tags")) continue;
            for (const auto& [key, value] : from["tags"].items()) {
                std::string lower = key;
                for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                tags[lower] = value;
            }
        }
        return tags;
    }
};

TEST_F(RenderMetadata, CarriesTitleAndArtistFromFormatToFormat) {
    test::makeQuietSpeech(file("0.wav"), 2, {"-metadata", "title=Names", "-metadata", "artist=Speakers"});
    const std::vector<std::string> chain = {"0.wav", "1.flac", "2.ogg",  "3.mkv",
                                            "4.m4a", "5.mp3",  "6.opus", "7.wav"};
    for (size_t i = 1; i < chain.size(); ++i) {
        render({file(chain[i - 1]), file(chain[i])});
        const auto tags = tagsOf(chain[i]);
        EXPECT_EQ(tags.value("title", ""), "Names") << chain[i];
        EXPECT_EQ(tags.value("artist", ""), "Speakers") << chain[i];
    }
}

// Ogg has room for one title per stream, FLAC and WAV have room for one per file, Matroska has room for both.
TEST_F(RenderMetadata, ChoosesBetweenFileAndStreamAsTheFfmpegProgramDoes) {
    test::makeQuietSpeech(
        file("in.mkv"), 2,
        {"-c:a", "flac", "-metadata", "title=Film", "-metadata", "artist=Band", "-metadata",
         "comment=Of the file", "-metadata:s:a:0", "title=Commentary", "-metadata:s:a:0", "language=swe"});
    for (const std::string extension : {".ogg", ".opus", ".flac", ".mka", ".wav"}) {
        render({file("in.mkv"), file("out" + extension)});
        test::ffmpeg({"-i", file("in.mkv"), file("expected" + extension)});
        for (const char* place : {"format", "stream"}) {
            SCOPED_TRACE(extension + " " + place);
            const auto tags_of = [&](const std::string& name) {
                const auto description = test::probe(file(name));
                const auto& part =
                    place == std::string("format") ? description["format"] : description["streams"][0];
                return part.value("tags", nlohmann::json::object());
            };
            const auto out = tags_of("out" + extension);
            const auto expected = tags_of("expected" + extension);
            for (const char* key : {"title", "ARTIST", "artist", "COMMENT", "comment", "language"})
                EXPECT_EQ(out.value(key, "none"), expected.value(key, "none")) << key;
        }
    }
    EXPECT_EQ(tagsOf("out.ogg").value("title", ""), "Commentary");
    EXPECT_EQ(tagsOf("out.ogg").value("artist", ""), "Band");
}

TEST_F(RenderMetadata, DropsTheLoudnessTagsOfTheInput) {
    test::makeQuietSpeech(file("in.flac"), 2,
                          {"-metadata", "REPLAYGAIN_TRACK_GAIN=+20 dB", "-metadata", "title=A"});
    ASSERT_TRUE(tagsOf("in.flac").contains("replaygain_track_gain"));
    render({file("in.flac"), file("out.flac")});
    EXPECT_FALSE(tagsOf("out.flac").contains("replaygain_track_gain"));
    EXPECT_EQ(tagsOf("out.flac").value("title", ""), "A");
}

TEST_F(RenderMetadata, KeepsTheLanguageOfTheStream) {
    test::makeQuietSpeech(file("in.mkv"), 2, {"-c:a", "flac", "-metadata:s:a:0", "language=swe"});
    render({file("in.mkv"), file("out.mka")});
    EXPECT_EQ(test::probe(file("out.mka"))["streams"][0]["tags"]["language"], "swe");
}

}  // namespace
