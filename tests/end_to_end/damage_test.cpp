// Damaged files: everything that decodes is rendered, and the exit code tells.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <random>

#include "end_to_end/media/decoded_input.h"
#include "end_to_end/media/dialogue_media.h"
#include "end_to_end/media/media.h"

namespace {

using testing::HasSubstr;

constexpr int kDamaged = 13;
constexpr size_t kFrames = 10 * 48000;

class DamagedFile : public test::ReadingTest {
  protected:
    // Makes ten seconds of noise, and overwrites a twentieth of the file in its middle.
    void makeDamaged(const std::string& name, const std::string& codec) {
        // The demuxer of Matroska cannot go on within a damaged cluster: keep clusters short.
        std::vector<std::string> arguments = {"-c:a", codec};
        if (name.ends_with(".mkv")) arguments.insert(arguments.end(), {"-cluster_time_limit", "500"});
        test::makeNoise(file("whole_" + name), 10, arguments);
        damage(name, 20);
    }

    // Writes the file "whole_<name>" again, with one part in `parts` overwritten in its middle.
    void damage(const std::string& name, size_t parts) {
        std::string bytes = test::readFile(file("whole_" + name));
        std::minstd_rand random(5);
        const auto from = static_cast<ptrdiff_t>(bytes.size() / 2);
        std::generate_n(bytes.begin() + from, bytes.size() / parts,
                        [&] { return static_cast<char>(random() >> 8); });
        test::writeFile(file(name), bytes);
    }

    void makeCutOff(const std::string& name, const std::string& codec) {
        test::makeNoise(file("whole_" + name), 10, {"-c:a", codec});
        const std::string bytes = test::readFile(file("whole_" + name));
        test::writeFile(file(name), bytes.substr(0, bytes.size() * 6 / 10));
    }
};

// Returns by how many frames the second before the last 50 ms is later in `b` than in `a`, at most 100, or
// 1000 if it is not there.
int shiftOfTheEnd(const std::vector<int16_t>& a, const std::vector<int16_t>& b) {
    const size_t from = a.size() - 96000 - 4800;
    for (int shift = 0; shift <= 200; ++shift) {
        const int frames = shift % 2 == 0 ? shift / 2 : -(shift + 1) / 2;
        const auto begin = a.begin() + static_cast<ptrdiff_t>(from);
        if (std::equal(begin, begin + 96000, b.begin() + static_cast<ptrdiff_t>(from) + 2 * frames))
            return frames;
    }
    return 1000;
}

TEST_F(DamagedFile, KeepsItsLengthAndSilenceReplacesWhatIsLost) {
    // FLAC in Ogg: the demuxer returns errors in the middle, after which all else must still be read.
    for (const auto& [name, codec] : std::vector<std::pair<std::string, std::string>>{
             {"a.mkv", "flac"}, {"a.flac", "flac"}, {"a.m4a", "alac"}, {"a.ogg", "flac"}}) {
        SCOPED_TRACE(name);
        makeDamaged(name, codec);
        const auto whole = test::decode16(file("whole_" + name));
        const auto read = readInput(file(name));
        EXPECT_EQ(read.exit_code, kDamaged) << read.notes;
        EXPECT_THAT(read.notes, HasSubstr("is damaged"));
        EXPECT_THAT(read.notes, HasSubstr("s of silence replace what is lost"));
        // The end is in its place: the last second is the original's.
        ASSERT_NEAR(static_cast<double>(read.samples.size()), static_cast<double>(whole.size()), 2.0 * 48);
        // Matroska rounds timestamps to 1 ms.
        const int shift = shiftOfTheEnd(whole, read.samples);
        EXPECT_LE(std::abs(shift), name == "a.mkv" ? 48 : 0);
        EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + 3 * 96000, read.samples.begin()));
        if (shift != 0) continue;
        const auto same =
            std::inner_product(whole.begin(), whole.end(), read.samples.begin(), size_t{0}, std::plus<>(),
                               [](int16_t a, int16_t b) { return a == b ? 1U : 0U; });
        EXPECT_GT(same, whole.size() * 6 / 10);
        EXPECT_EQ(readInput(file(name), {"--ignore-damage"}).exit_code, 0);
    }
}

TEST_F(DamagedFile, LossyAudioKeepsItsLength) {
    for (const auto& [name, codec] : std::vector<std::pair<std::string, std::string>>{{"a.m4a", "aac"},
                                                                                      {"a.mkv", "libopus"},
                                                                                      {"a.opus", "libopus"},
                                                                                      {"a.ogg", "libvorbis"},
                                                                                      {"a.ts", "mp2"}}) {
        SCOPED_TRACE(name);
        makeDamaged(name, codec);
        const auto read = readInput(file(name));
        EXPECT_EQ(read.exit_code, kDamaged) << read.notes;
        const auto whole = static_cast<double>(test::decode16(file("whole_" + name)).size());
        EXPECT_NEAR(static_cast<double>(read.samples.size()), whole, 2.0 * 48);
    }
}

TEST_F(DamagedFile, ThatIsCutOffIsRenderedAsFarAsItGoes) {
    for (const auto& [name, codec] :
         std::vector<std::pair<std::string, std::string>>{{"a.mkv", "flac"},
                                                          {"a.flac", "flac"},
                                                          {"a.wav", "pcm_s16le"},
                                                          {"a.aiff", "pcm_s16be"},
                                                          {"a.ogg", "libvorbis"},
                                                          {"a.mp3", "libmp3lame"}}) {
        SCOPED_TRACE(name);
        makeCutOff(name, codec);
        const auto read = readInput(file(name));
        EXPECT_EQ(read.exit_code, kDamaged) << read.notes;
        EXPECT_GT(read.samples.size(), 2 * kFrames * 4 / 10);
        EXPECT_LT(read.samples.size(), 2 * kFrames * 7 / 10);
        EXPECT_TRUE(read.report["damage"]["is_damaged"].get<bool>());
    }
}

TEST_F(DamagedFile, IsMeasuredAsFarAsItGoesWithTheExitCodeOfARender) {
    makeDamaged("bad.flac", "flac");
    const std::string bad = file("bad.flac");
    const std::string whole = file("whole_bad.flac");
    struct Case {
        std::vector<std::string> arguments;
        const char* damaged;  // where the report tells of it
    };
    for (const Case& measured :
         {Case{{"inspect", whole, bad}, "/files/1/damaged"},
          Case{{"inspect", "--pair", bad, whole}, "/files/0/damaged"},
          Case{{"ears", bad, "--segment", "first=0-1"}, "/0/damaged"},
          Case{{"speech", file("speech.wav"), file("background.wav"), file("bad_mix.flac")}, "/damaged"}}) {
        SCOPED_TRACE(measured.arguments.front());
        std::string path = bad;
        if (measured.arguments.front() == "speech") {
            test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), 10);
            test::ffmpeg({"-i", file("mix.wav"), file("whole_bad_mix.flac")});
            damage("bad_mix.flac", 80);  // too little to make the output inexplicable
            path = file("bad_mix.flac");
        }
        std::vector<std::string> command = {SONIVEX_PROGRAM};
        command.insert(command.end(), measured.arguments.begin(), measured.arguments.end());
        command.emplace_back("--json");
        const auto result = test::runProcess(command);
        EXPECT_EQ(result.exit_code, kDamaged) << result.err;
        EXPECT_EQ(result.err.find("sonivex: \"" + path + "\" is damaged: "), 0U) << result.err;
        EXPECT_THAT(result.err, HasSubstr("; the rest was measured\n"));
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
        const auto report = nlohmann::json::parse(result.out);
        EXPECT_TRUE(report.at(nlohmann::json::json_pointer(measured.damaged)).get<bool>()) << report;
    }
    const auto sound = test::runProcess({SONIVEX_PROGRAM, "inspect", whole, "--json"});
    EXPECT_EQ(sound.exit_code, 0) << sound.err;
    EXPECT_FALSE(nlohmann::json::parse(sound.out)["files"][0]["damaged"].get<bool>());
    EXPECT_THAT(test::runProcess({SONIVEX_PROGRAM, "inspect", bad}).out, HasSubstr("  damaged, "));
}

TEST_F(DamagedFile, WhoseHeaderIsLostIsRefusedWithAReason) {
    makeCutOff("a.m4a", "aac");
    const auto result = run({file("a.m4a"), file("out.wav"), "--quiet"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_THAT(result.err, HasSubstr("damaged or cut off"));
}

TEST_F(DamagedFile, DoesNotMakeTheDecoderInventChannels) {
    // Random bytes in a packet of AAC may describe any number of channels, and the decoder believes them.
    test::makeNoise(file("whole.mp4"), 60, {"-c:a", "aac"});
    std::string bytes = test::readFile(file("whole.mp4"));
    std::minstd_rand random(3);
    const auto from = static_cast<ptrdiff_t>(bytes.size() / 4);
    std::generate_n(bytes.begin() + from, bytes.size() / 2, [&] { return static_cast<char>(random() >> 8); });
    test::writeFile(file("in.mp4"), bytes);
    const auto read = readInput(file("in.mp4"));
    EXPECT_EQ(read.exit_code, kDamaged) << read.notes;
    EXPECT_EQ(read.report["input"]["channels"], 2);
    EXPECT_EQ(read.notes.find("the audio changes"), std::string::npos) << read.notes;
}

}  // namespace
