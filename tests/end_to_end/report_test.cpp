// Runs `sonivex report`, which compares effects in a page.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "end_to_end/media/media.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

bool isOfType(const json& value, const std::string& type) {
    if (type == "object") return value.is_object();
    if (type == "array") return value.is_array();
    if (type == "string") return value.is_string();
    if (type == "boolean") return value.is_boolean();
    if (type == "integer") return value.is_number_integer();
    if (type == "number") return value.is_number();
    return type == "null" && value.is_null();
}

bool hasType(const json& value, const json& types) {
    if (types.is_string()) return isOfType(value, types);
    return std::any_of(types.begin(), types.end(), [&](const json& type) { return isOfType(value, type); });
}

// Checks a value against a schema, as far as the schema of reports needs JSON Schema.
void expectValid(const json& value, const json& schema, const std::string& place) {
    ASSERT_TRUE(hasType(value, schema.at("type"))) << place << " is " << value;
    if (schema.contains("enum")) {
        EXPECT_THAT(schema["enum"].get<std::vector<json>>(), testing::Contains(value)) << place;
    }
    if (value.is_number() && schema.contains("minimum")) {
        EXPECT_GE(value, schema["minimum"]) << place;
    }
    if (value.is_number() && schema.contains("maximum")) {
        EXPECT_LE(value, schema["maximum"]) << place;
    }
    if (value.is_object()) {
        for (const auto& name : schema.at("required"))
            EXPECT_TRUE(value.contains(name.get<std::string>())) << place << " lacks " << name;
        for (const auto& [name, member] : value.items()) {
            ASSERT_TRUE(schema["properties"].contains(name)) << place << " has " << name;
            expectValid(member, schema["properties"][name], place + "." + name);
        }
    }
    if (value.is_array()) {
        EXPECT_GE(value.size(), schema.value("minItems", 0U)) << place;
        for (const json& item : value) expectValid(item, schema.at("items"), place + "[]");
    }
}

class ReportCommand : public testing::Test {
  protected:
    static test::ProcessResult run(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONIVEX_PROGRAM, "report"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        // An hour of sound takes its time, above all with a sanitizer and other tests beside it.
        return test::Process(command).wait(std::chrono::minutes(10));
    }

    std::string file(const std::string& name) const { return folder_.file(name); }

    // Makes a report of a file, checks its summary against the schema, and returns the summary.
    json summaryOf(const std::string& input, std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {input, "-o", file("page.html"), "--force"});
        const auto result = run(arguments);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        page_ = test::readFile(file("page.html"));
        const std::string opening = "<script type=\"application/json\" id=\"summary\">";
        const std::size_t from = page_.find(opening);
        EXPECT_NE(from, std::string::npos);
        const std::size_t to = page_.find("</script>", from);
        json summary = json::parse(page_.substr(from + opening.size(), to - from - opening.size()));
        expectValid(summary, json::parse(test::readFile(SONIVEX_REPORT_SCHEMA)), "summary");
        return summary;
    }

    test::TemporaryFolder folder_;
    std::string page_;
};

TEST_F(ReportCommand, ComparesEachEffectThatTakesTheChannels) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const json summary = summaryOf(file("in.wav"));
    ASSERT_EQ(summary["versions"].size(), 4U);
    const json& original = summary["versions"][0];
    const json& normalizer = summary["versions"][1];
    EXPECT_EQ(original["title"], "original");
    EXPECT_EQ(normalizer["effect"], "normalizer");
    EXPECT_GT(normalizer["integrated_lufs"], original["integrated_lufs"].get<double>() + 5.0);
    EXPECT_EQ(original["frames"], normalizer["frames"]);
    // The player lowers the louder version by what the effect has raised it.
    EXPECT_NEAR(normalizer["matching_gain_db"].get<double>() - original["matching_gain_db"].get<double>(),
                original["integrated_lufs"].get<double>() - normalizer["integrated_lufs"].get<double>(), 0.2);
    for (const char* part :
         {"waveforms", "spectrograms", "loudness", "changes", "presence", "responses", "guard"})
        EXPECT_THAT(page_, HasSubstr("<section id=\"" + std::string(part) + "\">"));
    EXPECT_THAT(page_, HasSubstr("id=\"sound-3\""));
    EXPECT_THAT(page_, Not(HasSubstr("http:")));
    EXPECT_THAT(page_, Not(HasSubstr("https:")));
}

TEST_F(ReportCommand, HasTheFiguresThatRenderMeasures) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const json summary = summaryOf(file("in.wav"), {"--effect", "dialogue:voice=3,normalizer", "--no-sound"});
    const auto rendered =
        test::runProcess({SONIVEX_PROGRAM, "render", "--json", "--effect", "dialogue,normalizer", "--voice",
                          "3", file("in.wav"), file("out.wav")});
    ASSERT_EQ(rendered.exit_code, 0) << rendered.err;
    const json report = json::parse(rendered.out);
    EXPECT_NEAR(summary["versions"][0]["integrated_lufs"], report["input"]["integrated_lufs"], 0.011);
    EXPECT_NEAR(summary["versions"][1]["integrated_lufs"], report["output"]["integrated_lufs"], 0.011);
    EXPECT_EQ(summary["versions"][1]["frames"], report["output"]["frames"]);
    EXPECT_EQ(summary["versions"][1]["load_guard"]["calls"], report["frames_pushed"]);
}

TEST_F(ReportCommand, ShowsTheResponsesOfEachLayout) {
    const std::vector<std::pair<int, std::string>> layouts = {
        {1, "cingo"}, {2, "cingo"}, {6, "bingo-5.1"}, {8, "bingo-7.1"}};
    for (const auto& [channels, set] : layouts) {
        test::makeQuietSpeech(file("in.wav"), channels);
        const json summary = summaryOf(file("in.wav"), {"--effect", "surround"});
        const json& version = summary["versions"][1];
        EXPECT_EQ(summary["versions"][0]["channels"], channels);
        EXPECT_EQ(version["channels"], 2);
        ASSERT_EQ(version["responses"].size(), 1U) << channels;
        EXPECT_EQ(version["responses"][0]["set"], set);
        EXPECT_EQ(version["responses"][0]["loudspeakers"].size(), std::max(channels, 2)) << channels;
    }
    const json mode = summaryOf(file("in.wav"), {"--effect", "surround:type=MegaBass:mode=2", "--no-sound"});
    EXPECT_EQ(mode["versions"][1]["responses"][0]["set"], "7.1-mode2");
}

TEST_F(ReportCommand, ShowsTheResponsesOfWhatSurroundGets) {
    test::makeQuietSpeech(file("in.wav"), 6);
    const json summary = summaryOf(file("in.wav"), {"--effect", "dialogue,surround", "--no-sound"});
    const json& version = summary["versions"][1];
    EXPECT_THAT(version["conversions"].dump(), HasSubstr("stereo"));
    ASSERT_EQ(version["responses"].size(), 1U);
    EXPECT_EQ(version["responses"][0]["set"], "cingo");
}

TEST_F(ReportCommand, SaysWhereTheAudioChangesItsChannels) {
    test::makeQuietSpeech(file("first.ac3"), 2);
    test::makeQuietSpeech(file("second.ac3"), 6);
    test::writeFile(file("in.ac3"), test::readFile(file("first.ac3")) + test::readFile(file("second.ac3")));
    const json summary = summaryOf(file("in.ac3"), {"--effect", "surround", "--no-sound"});
    EXPECT_THAT(summary["versions"][1]["conversions"].dump(),
                HasSubstr("the audio changes at 0:01 from 48000 Hz, stereo to 48000 Hz, 5.1"));
}

TEST_F(ReportCommand, OfADamagedFileIsOfTheRestAndSaysSo) {
    test::makeQuietSpeech(file("whole.flac"), 2);
    std::string bytes = test::readFile(file("whole.flac"));
    const std::size_t middle = bytes.size() / 2;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(middle), 200, '\0');
    test::writeFile(file("bad.flac"), bytes);
    const auto result = run({file("bad.flac"), "-o", file("page.html"), "--effect", "surround", "--quiet"});
    EXPECT_EQ(result.exit_code, 13);
    EXPECT_EQ(result.err,
              "sonivex: a part of \"" + file("bad.flac") + "\" is lost; the report is of the rest\n");
    EXPECT_THAT(test::readFile(file("page.html")), HasSubstr("\"is_damaged\":true"));
}

TEST_F(ReportCommand, LeavesOutAnEffectThatDoesNotTakeTheChannels) {
    test::makeQuietSpeech(file("in.wav"), 6);
    const json summary = summaryOf(file("in.wav"), {"--no-sound"});
    EXPECT_EQ(summary["versions"].size(), 3U);
    EXPECT_THAT(summary["notes"].dump(), HasSubstr("dialogue enhancement is left out"));
    const json converted = summaryOf(file("in.wav"), {"--no-sound", "--effect", "dialogue"});
    EXPECT_THAT(converted["versions"][1]["conversions"].dump(), HasSubstr("stereo"));
}

TEST_F(ReportCommand, OfSilenceHasNoLoudnessButAPage) {
    test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=r=48000:cl=stereo:d=4", file("silence.wav")});
    const json summary = summaryOf(file("silence.wav"));
    for (const json& version : summary["versions"]) {
        EXPECT_TRUE(version["integrated_lufs"].is_null()) << version["title"];
        EXPECT_TRUE(version["true_peak_dbtp"].is_null()) << version["title"];
        EXPECT_EQ(version["matching_gain_db"], 0.0);
        EXPECT_GT(version["sound_bytes"], 0);
    }
    EXPECT_THAT(page_, HasSubstr("The original has no measurable loudness"));
    EXPECT_THAT(page_, Not(HasSubstr("nan")));
}

TEST_F(ReportCommand, OfOneSampleHasAPage) {
    test::ffmpeg(
        {"-f", "lavfi", "-i", "aevalsrc=0.5|0.5:s=48000:d=1", "-af", "atrim=end_sample=1", file("one.wav")});
    const json summary = summaryOf(file("one.wav"));
    EXPECT_EQ(summary["versions"][0]["frames"], 1);
    EXPECT_TRUE(summary["versions"][0]["integrated_lufs"].is_null());
    EXPECT_NEAR(summary["versions"][0]["true_peak_dbtp"], -6.0, 0.1);
    EXPECT_THAT(page_, HasSubstr("id=\"sound-0\""));
    EXPECT_NEAR(summary["sound"]["length_s"], 1.0 / 48000.0, 1e-6);
}

TEST_F(ReportCommand, OfAFileWithoutSamplesHasAPageWithoutPlayers) {
    test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=r=48000:cl=stereo:d=1", "-af", "atrim=end_sample=0",
                  file("none.wav")});
    const auto result = run({file("none.wav"), "-o", file("page.html"), "--json"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const json summary = json::parse(result.out);
    expectValid(summary, json::parse(test::readFile(SONIVEX_REPORT_SCHEMA)), "summary");
    EXPECT_EQ(summary["versions"][0]["frames"], 0);
    EXPECT_TRUE(summary["sound"].is_null());
    EXPECT_THAT(test::readFile(file("page.html")), HasSubstr("There is no sound to play."));
}

TEST_F(ReportCommand, OfAnHourHoldsAnExcerptAndStaysBelowFiveMegabytes) {
    // A low rate keeps the test short; 16 kHz is the lowest at which the normalizer works.
    test::ffmpeg(
        {"-f", "lavfi", "-i", "anoisesrc=d=3600:c=pink:r=16000:a=0.1:seed=1", "-ac", "1", file("hour.wav")});
    const json summary = summaryOf(file("hour.wav"), {"--effect", "normalizer"});
    EXPECT_EQ(summary["versions"][0]["frames"], 3600 * 16000);
    EXPECT_TRUE(summary["sound"]["is_excerpt"]);
    const double start_s = summary["sound"]["start_s"];
    const double length_s = summary["sound"]["length_s"];
    EXPECT_NEAR(start_s + length_s / 2.0, 1800.0, 0.01);
    EXPECT_GT(length_s, 60.0);
    EXPECT_THAT(page_, HasSubstr("the players hold an excerpt"));
    EXPECT_LT(page_.size(), 5000000U);
}

TEST_F(ReportCommand, PlaysTheStretchThatIsAskedFor) {
    test::ffmpeg({"-f", "lavfi", "-i", "sine=f=500:d=10:r=48000", file("in.wav")});
    const json summary =
        summaryOf(file("in.wav"), {"--effect", "normalizer", "--start", "8.5", "--length", "5"});
    EXPECT_EQ(summary["sound"]["start_s"], 8.5);
    EXPECT_EQ(summary["sound"]["length_s"], 1.5);
    EXPECT_TRUE(summary["sound"]["is_excerpt"]);
}

TEST_F(ReportCommand, HoldsVersionsOfEqualLengthThatStartTogether) {
    // A click at a known place in silence: every version must have it at the same time.
    test::ffmpeg(
        {"-f", "lavfi", "-i", "aevalsrc='if(eq(n,24000),0.8,0)':s=48000:d=2", "-ac", "1", file("click.wav")});
    (void)summaryOf(file("click.wav"), {"--effect", "normalizer"});
    std::vector<std::size_t> lengths;
    for (const char* sound : {"sound-0", "sound-1"}) {
        const std::string opening = "id=\"" + std::string(sound) + "\">";
        const std::size_t from = page_.find(opening) + opening.size();
        const std::string text = page_.substr(from, page_.find("</script>", from) - from);
        std::ofstream(file("sound.b64")) << text;
        ASSERT_EQ(
            test::runProcess({"sh", "-c", "base64 -d < " + file("sound.b64") + " > " + file("sound.ogg")})
                .exit_code,
            0);
        const std::vector<float> samples = test::decode(file("sound.ogg"));
        lengths.push_back(samples.size());
        const auto peak = std::max_element(samples.begin(), samples.end(), [](float one, float other) {
            return std::abs(one) < std::abs(other);
        });
        EXPECT_NEAR(static_cast<double>(peak - samples.begin()) / 2.0, 24000.0, 48.0) << sound;
    }
    EXPECT_EQ(lengths[0], 2U * 96000);
    EXPECT_EQ(lengths[0], lengths[1]);
}

TEST_F(ReportCommand, TellsWhenTheLoadGuardSteppedIn) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const json summary = summaryOf(file("in.wav"), {"--effect", "normalizer", "--fps", "120", "--no-sound"});
    const json& guard = summary["versions"][1]["load_guard"];
    ASSERT_EQ(guard["events"].size(), 1U);
    EXPECT_EQ(guard["events"][0]["state"], "bypassed");
    EXPECT_EQ(guard["events"][0]["time_s"], 0.0);
    EXPECT_EQ(guard["bypassed"], guard["calls"]);
    EXPECT_THAT(page_, HasSubstr("the filter passes the sound through from here on"));
}

TEST_F(ReportCommand, WritesThePicturesAlone) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const auto result = run({file("in.wav"), "--png", file("pictures"), "--effect", "surround"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    for (const char* name : {"waveform-original", "waveform-surround", "spectrogram-surround",
                             "loudness-original", "gain", "true-peaks", "response-cingo-1"}) {
        const std::string png = test::readFile(file("pictures") + "/" + name + ".png");
        EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n") << name;
        EXPECT_GT(png.size(), 3000U) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(file("page.html")));
    EXPECT_EQ(run({file("in.wav"), "--png", file("pictures"), "--effect", "surround"}).exit_code, 6);
}

TEST_F(ReportCommand, RefusesAPictureThatIsThereBeforeItMeasures) {
    test::makeQuietSpeech(file("in.wav"), 2);
    std::filesystem::create_directory(file("pictures"));
    for (const char* name : {"waveform-original", "spectrogram-surround", "loudness-surround", "gain"}) {
        const std::string picture = file("pictures") + "/" + name + ".png";
        std::ofstream(picture) << "mine";
        const auto result = run({file("in.wav"), "--png", file("pictures"), "--effect", "surround"});
        EXPECT_EQ(result.exit_code, 6) << name;
        EXPECT_THAT(result.err, HasSubstr(std::string(name) + ".png")) << name;
        EXPECT_THAT(result.err, Not(HasSubstr("in.wav: original"))) << name;
        EXPECT_EQ(test::readFile(picture), "mine") << name;
        std::filesystem::remove(picture);
    }
}

// Only measuring tells whether there are such pictures.
TEST_F(ReportCommand, WritesThePageAlsoWhereAPictureIsRefused) {
    test::makeQuietSpeech(file("in.wav"), 2);
    std::filesystem::create_directory(file("pictures"));
    std::ofstream(file("pictures") + "/response-cingo-1.png") << "mine";
    const auto result = run({file("in.wav"), "-o", file("page.html"), "--png", file("pictures"), "--effect",
                             "surround", "--no-sound"});
    EXPECT_EQ(result.exit_code, 6);
    EXPECT_EQ(test::readFile(file("pictures") + "/response-cingo-1.png"), "mine");
    EXPECT_THAT(test::readFile(file("page.html")), HasSubstr("</html>"));
}

TEST_F(ReportCommand, RefusesToReplaceItsInput) {
    test::makeQuietSpeech(file("in.wav"), 2);
    std::filesystem::create_symlink(file("in.wav"), file("link.html"));
    const std::string sound = test::readFile(file("in.wav"));
    for (const char* page : {"in.wav", "./in.wav", "link.html"}) {
        const auto result = run({file("in.wav"), "-o", file(page), "--force", "--effect", "normalizer"});
        EXPECT_EQ(result.exit_code, 2) << page;
        EXPECT_THAT(result.err, HasSubstr("the page would replace IN")) << page;
        EXPECT_EQ(test::readFile(file("in.wav")), sound) << page;
    }
}

TEST_F(ReportCommand, RefusesTheSameVersionTwice) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const auto result = run({file("in.wav"), "-o", file("page.html"), "--effect", "dialogue:voice=3",
                             "--effect", "dialogue:voice=3.0"});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, HasSubstr("the same version as --effect \"dialogue:voice=3\""));
    EXPECT_FALSE(std::filesystem::exists(file("page.html")));
}

TEST_F(ReportCommand, RefusesWhatItCannotDo) {
    test::makeQuietSpeech(file("in.wav"), 2);
    EXPECT_EQ(run({file("in.wav")}).exit_code, 2);
    EXPECT_EQ(run({"-o", file("page.html")}).exit_code, 2);
    EXPECT_EQ(run({file("missing.wav"), "-o", file("page.html")}).exit_code, 3);
    EXPECT_EQ(run({"/dev/null", "-o", file("page.html")}).exit_code, 2);
    EXPECT_EQ(run({file("in.wav"), "-o", file("no/such/page.html")}).exit_code, 7);
    const auto no_folder = run({file("in.wav"), "--png", file("in.wav") + "/pictures"});
    EXPECT_EQ(no_folder.exit_code, 7);
    EXPECT_EQ(no_folder.err, "sonivex: cannot make the folder \"" + file("in.wav") + "/pictures\"\n");
    const auto no_effect = run({file("in.wav"), "-o", file("page.html"), "--effect", "surround", "--plugin",
                                SONIVEX_PLUGIN_WITHOUT_EFFECTS});
    EXPECT_EQ(no_effect.exit_code, 11);
    EXPECT_THAT(no_effect.err, HasSubstr("sonivex: the plug-in does not have surround"));
    const auto unknown = run({file("in.wav"), "-o", file("page.html"), "--effect", "surrond"});
    EXPECT_EQ(unknown.exit_code, 2);
    EXPECT_THAT(unknown.err, HasSubstr("did you mean \"surround\"?"));
    std::ofstream(file("there.html")) << "mine";
    EXPECT_EQ(run({file("in.wav"), "-o", file("there.html")}).exit_code, 6);
    EXPECT_EQ(test::readFile(file("there.html")), "mine");
    EXPECT_FALSE(std::filesystem::exists(file("page.html")));
}

}  // namespace
