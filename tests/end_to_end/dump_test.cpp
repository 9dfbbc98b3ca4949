// Renders files while the filter dumps the PCM before and after an effect, and then runs `sonivex inspect` on
// the dumps.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "end_to_end/media/dialogue_media.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;

class DumpAndInspect : public test::RenderTest {
  protected:
    static test::ProcessResult inspect(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONIVEX_PROGRAM, "inspect"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return test::runProcess(command);
    }

    nlohmann::json inspectDumps(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> all = dumps_.names();
        for (auto& name : all) name = dumps_.file(name);
        all.insert(all.end(), arguments.begin(), arguments.end());
        all.emplace_back("--json");
        const auto result = inspect(all);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return nlohmann::json::parse(result.out);
    }

    test::TemporaryFolder dumps_;
};

TEST_F(DumpAndInspect, ADialogueDumpShowsTheDelayAndTheGain) {
    test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), 2);
    const auto report =
        render({"--effect", "dialogue", "--dump", dumps_.path(), file("mix.wav"), file("out.wav")});
    EXPECT_EQ(report["dump_folder"], dumps_.path());
    EXPECT_EQ(report["dump_files"].get<std::vector<std::string>>(), dumps_.names());
    EXPECT_TRUE(report["notes"].empty()) << report["notes"];
    const auto seen = inspectDumps();
    ASSERT_EQ(seen["files"].size(), 2U);
    ASSERT_EQ(seen["pairs"].size(), 1U);
    EXPECT_EQ(seen["pairs"][0]["latency_frames"], 1536);
    EXPECT_GT(seen["pairs"][0]["gain_db"].get<double>(), 2.5);
    EXPECT_LT(seen["pairs"][0]["gain_db"].get<double>(), 8.5);
}

TEST_F(DumpAndInspect, ANormalizerDumpHoldsItsInputAndOutput) {
    test::makeQuietSpeech(file("in.wav"), 1);
    const auto report =
        render({"--dump", dumps_.path(), "--frame-size", "256", file("in.wav"), file("out.wav")});
    EXPECT_TRUE(report["notes"].empty()) << report["notes"];
    ASSERT_EQ(dumps_.names().size(), 2U);
    const auto seen = inspectDumps({"--channels", "1"});
    EXPECT_EQ(seen["pairs"][0]["latency_frames"], 256);
    EXPECT_NEAR(seen["pairs"][0]["gain_db"].get<double>(), 20.0, 0.1);
    // The input dump holds the samples of the file, then silence.
    const std::string pcm = test::readFile(dumps_.file(dumps_.names().front()));
    const std::string wav = test::readFile(file("in.wav"));
    const std::string samples = wav.substr(wav.find("data") + 8);
    EXPECT_EQ(pcm.substr(0, samples.size()), samples);
}

TEST_F(DumpAndInspect, TheFileSizesOfASurroundDumpRevealItsChannelCounts) {
    test::makeQuietSpeech(file("in.wav"), 6);
    const auto report = render({"--effect", "surround", "--dump", dumps_.path(), "--frame-size", "480",
                                file("in.wav"), file("out.wav")});
    EXPECT_TRUE(report["notes"].empty()) << report["notes"];
    const auto seen = inspectDumps({"--rate", "48000"});
    EXPECT_EQ(seen["files"][0]["channels"], 6);
    EXPECT_EQ(seen["files"][1]["channels"], 2);
    EXPECT_TRUE(seen["files"][0]["assumed"].empty());
    // Calls of 480 frames need no queueing. The responses have their onset after 25 to 40 samples.
    EXPECT_GE(seen["pairs"][0]["latency_frames"], 20);
    EXPECT_LE(seen["pairs"][0]["latency_frames"], 60);
}

TEST_F(DumpAndInspect, AFlushDuringPlaybackEndsOneSessionAndStartsAnother) {
    test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), 4);
    for (const char* way : {"--raw-latency", "--threaded"}) {
        const auto before = dumps_.names();
        const auto report = render({"--effect", "dialogue", way, "--flush-at", "1.5", "--dump", dumps_.path(),
                                    "--force", file("mix.wav"), file("out.wav")});
        EXPECT_EQ(report["flushes"], 1);
        EXPECT_EQ(report["frames_dropped"], 0);
        ASSERT_EQ(report["dump_files"].size(), 4U);
        EXPECT_EQ(dumps_.names().size(), before.size() + 4);
        EXPECT_TRUE(report["notes"].empty()) << report["notes"];
    }
    const auto seen = inspectDumps();
    ASSERT_EQ(seen["pairs"].size(), 4U);
    std::vector<int64_t> lengths;
    for (const auto& file : seen["files"]) lengths.push_back(file["frames"]);
    // 70 whole calls of 1024 frames end before 1.5 s.
    EXPECT_EQ(std::count(lengths.begin(), lengths.end(), 70 * 1024), 4);
    // 192000 frames and a delay of 1536 frames take 189 calls.
    EXPECT_EQ(std::count(lengths.begin(), lengths.end(), (189 - 70) * 1024), 4);
    for (const auto& pair : seen["pairs"]) EXPECT_EQ(pair["latency_frames"], 1536) << pair;
}

TEST_F(DumpAndInspect, AFlushSilencesTheAudioInsideTheEffectWithoutShiftingTheRest) {
    test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), 4);
    render({"--effect", "dialogue", "--flush-at", "1.5", file("mix.wav"), file("out.wav")});
    const auto in = test::decode(file("mix.wav"));
    const auto out = test::decode(file("out.wav"));
    ASSERT_EQ(out.size(), in.size());
    const size_t flush = 70 * 1024;
    const auto is_silent = [&](size_t frame) { return out[2 * frame] == 0.0F && out[2 * frame + 1] == 0.0F; };
    for (size_t frame = flush - 1536; frame < flush; ++frame) ASSERT_TRUE(is_silent(frame)) << frame;
    const auto result = inspect({"--pair", file("mix.wav"), file("out.wav"), "--json"});
    EXPECT_EQ(nlohmann::json::parse(result.out)["pairs"][0]["latency_frames"], 0);
}

// Compressed silence stays below the file size limit, but its dump exceeds it. Rendering continues and
// reports the missing bytes.
TEST_F(DumpAndInspect, ReportsHowManyBytesDidNotFitOnTheDisk) {
    test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=sample_rate=48000:channel_layout=stereo", "-t", "1",
                  file("in.flac")});
    test::ProcessOptions options;
    options.file_size_limit_bytes = 64 * 1024;
    const auto result =
        run({"--effect", "dialogue", "--dump", dumps_.path(), "--json", file("in.flac"), file("out.flac")},
            options);
    ASSERT_EQ(result.exit_code, 8) << result.err;
    EXPECT_THAT(result.err, HasSubstr("\nsonivex: the dump in \"" + dumps_.path() + "\" is incomplete: "));
    EXPECT_EQ(test::decode(file("out.flac")).size(), 2U * 48000);
    // 48000 frames and a delay of 1536 take 49 calls of 1024 frames. Each file gets 4 bytes per frame.
    const std::string missing = std::to_string(2 * (49 * 1024 * 4 - 64 * 1024)) + " bytes are missing";
    EXPECT_THAT(result.err, HasSubstr(missing));
    const auto report = nlohmann::json::parse(result.out);
    ASSERT_EQ(report["notes"].size(), 1U) << report;
    EXPECT_THAT(report["notes"][0], HasSubstr(missing));
    EXPECT_EQ(report["dump_files"].size(), 2U);
}

TEST_F(DumpAndInspect, RejectsADumpPathThatIsNotAFolder) {
    test::makeQuietSpeech(file("in.wav"), 1);
    test::writeFile(file("plain"), "");
    for (const std::string& path : {file("none"), file("plain"), std::string()}) {
        const auto result = run({"--dump", path, file("in.wav"), file("out.wav")});
        EXPECT_EQ(result.exit_code, path.empty() ? 2 : 7) << path;
        EXPECT_THAT(result.err, HasSubstr("--dump"));
        EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
        EXPECT_FALSE(std::filesystem::exists(file("none")));
    }
}

TEST_F(DumpAndInspect, InspectRejectsUnreadableFilesWithOneLineOnStandardError) {
    test::writeFile(file("empty.pcm"), "");
    test::writeFile(file("odd.pcm"), "12345");
    test::writeFile(file("text.wav"), "no sound");
    struct Case {
        std::vector<std::string> arguments;
        int exit_code;
        std::string part;
    };
    for (const Case& bad : {Case{{}, 2, "FILE"}, Case{{file("none.pcm")}, 3, "No such file"},
                            Case{{file("none.wav")}, 3, "No such"}, Case{{folder_.path()}, 3, "is a folder"},
                            Case{{file("empty.pcm")}, 4, "is empty"}, Case{{file("odd.pcm")}, 4, "5 bytes"},
                            Case{{file("text.wav")}, 3, "text.wav"},
                            Case{{"--channels", "0", file("odd.pcm")}, 2, "--channels"},
                            Case{{"--channels", "2,9", file("odd.pcm")}, 2, "--channels"},
                            Case{{"--rate", "7", file("odd.pcm")}, 2, "--rate"},
                            Case{{"--rate", "x", file("odd.pcm")}, 2, "--rate"},
                            Case{{"--pair", file("odd.pcm")}, 2, "--pair"}}) {
        const auto result = inspect(bad.arguments);
        EXPECT_EQ(result.exit_code, bad.exit_code) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("sonivex: "), 0U);
        EXPECT_THAT(result.err, HasSubstr(bad.part));
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    }
}

TEST_F(DumpAndInspect, InspectStatesItsAssumptionsAndTheLackOfAMatch) {
    test::makeQuietSpeech(file("in.wav"), 2);
    test::ffmpeg({"-f", "lavfi", "-i", "anoisesrc=duration=1:sample_rate=48000:seed=5", "-ac", "2", "-f",
                  "s16le", file("other.pcm")});
    const auto result = inspect({"--pair", file("in.wav"), file("other.pcm")});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.out, HasSubstr("assumed"));
    EXPECT_THAT(result.out, HasSubstr("2 channels and 48000 Hz"));
    EXPECT_THAT(result.out, HasSubstr("no clear match"));
}

}  // namespace
