// `sonivex play` on sound cards that SDL imitates. The driver "disk" writes what it plays into a file, in
// real time, and fails as cards do: its file may be full, or nobody may read it.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <thread>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"
#include "support/signals/clicks.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;

constexpr size_t kRate_hz = 48000;

class Play : public test::RenderTest {
  protected:
    // Makes a stereo tone of 440 Hz.
    std::string tone(double duration_s, const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments = {
            "-f", "lavfi", "-i",
            "aevalsrc=0.5*sin(2*PI*440*t)|0.5*sin(2*PI*440*t):s=48000:d=" + std::to_string(duration_s)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(file("tone.flac"));
        test::ffmpeg(arguments);
        return file("tone.flac");
    }

    // Returns the command that plays on a driver of SDL, which for "disk" writes into `to`.
    static std::vector<std::string> playing(const std::string& driver, const std::string& to,
                                            const std::vector<std::string>& arguments,
                                            const std::string& redirection = "") {
        std::vector<std::string> all = {"env",
                                        "SDL_AUDIODRIVER=" + driver,
                                        "SDL_DISKAUDIOFILE=" + to,
                                        "sh",
                                        "-c",
                                        "exec \"$@\" " + redirection,
                                        "sh",
                                        SONIVEX_PROGRAM,
                                        "play"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return all;
    }
    test::ProcessResult play(const std::vector<std::string>& arguments) const {
        // The card takes 1024 frames in 60 ms, three times as long as they last, so that the program keeps up
        // with it under a sanitizer or on a busy machine.
        std::vector<std::string> command = playing("disk", file("played.raw"), arguments);
        command.insert(command.begin() + 1, "SDL_DISKAUDIODELAY=60");
        return test::runProcess(command);
    }
    // Returns what the card has played, without the silence at both ends.
    std::vector<float> played() const {
        const std::string bytes = test::readFile(file("played.raw"));
        std::vector<float> samples(bytes.size() / sizeof(float));
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
        const auto sounds = [](float sample) { return sample != 0.0F; };
        const auto end = std::find_if(samples.rbegin(), samples.rend(), sounds).base();
        samples.erase(end + (end - samples.begin()) % 2, samples.end());
        const auto begin = std::find_if(samples.begin(), samples.end(), sounds);
        samples.erase(samples.begin(), begin - (begin - samples.begin()) % 2);
        return samples;
    }
};

TEST_F(Play, PlaysToTheEndAndSaysSo) {
    const auto result = play({tone(1.5), "--effect", "surround"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("ended at 0:01; gaps 0, clipped samples 0"));
    const double heard_s = static_cast<double>(played().size()) / 2.0 / kRate_hz;
    EXPECT_GT(heard_s, 1.5);
    EXPECT_LT(heard_s, 1.5 + 0.3);  // with surround's reverberation
}

TEST_F(Play, ACardHearsTheSamplesOfTheFile) {
    const auto result = play({tone(1.0), "--original", "--no-match"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    ASSERT_THAT(result.out, HasSubstr("gaps 0"));
    const std::vector<float> heard = played();
    std::vector<float> decoded = test::decode(file("tone.flac"));
    // The tone begins with a sample of 0.
    decoded.erase(decoded.begin(), decoded.begin() + 2);
    // The card's last sample fades to silence over 256 frames.
    ASSERT_NEAR(static_cast<double>(heard.size()), static_cast<double>(decoded.size()), 2 * 256);
    const size_t end = std::min(heard.size(), decoded.size());
    for (size_t i = 2 * 256; i < end; ++i) ASSERT_NEAR(heard[i], decoded[i], 1e-6) << i;
}

TEST_F(Play, ScriptedSwitchesDoNotClick) {
    const auto result =
        play({tone(6.0), "--effect", "surround", "--script", "1 e; 1.5 e; 2 n; 2.5 t; 3 left; 3.6 q"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    ASSERT_THAT(result.out, HasSubstr("gaps 0"));
    const std::vector<float> heard = played();
    const size_t end = heard.size() / 2 - 2;
    EXPECT_NEAR(static_cast<double>(end) / kRate_hz, 3.64, 0.01);
    double steady = 0.0;  // between the switches
    for (const double second : {0.9, 1.4, 1.9, 2.4, 2.9}) {
        const auto at = static_cast<size_t>(second * kRate_hz);
        steady = std::max(steady, test::largestSecondDifference(heard, at, at + 4000));
    }
    const double spike = test::largestSecondDifference(heard, kRate_hz / 2, end);
    RecordProperty("spike_db", std::to_string(20.0 * std::log10(spike / steady)));
    EXPECT_LE(20.0 * std::log10(spike / steady), 3.0);
}

TEST_F(Play, APipeIsPlayedAndCannotBeSoughtIn) {
    tone(1.5, {"-c:a", "flac"});
    std::vector<std::string> command = playing("disk", file("played.raw"), {"-", "--script", "0.5 right"},
                                               "<" + file("tone.flac") + " 2>&1");
    command = {
        "sh",
        "-c",
        "cat \"$1\" | env SDL_AUDIODRIVER=disk SDL_DISKAUDIOFILE=\"$2\" \"$3\" play - --script '0.5 right'",
        "sh",
        file("tone.flac"),
        file("played.raw"),
        SONIVEX_PROGRAM};
    const auto result = test::runProcess(command);
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("cannot be sought in"));
    EXPECT_THAT(result.out, HasSubstr("ended at 0:01"));
}

TEST_F(Play, APipeCannotBeginLater) {
    const auto result =
        test::runProcess({"sh", "-c", "cat \"$1\" | SDL_AUDIODRIVER=dummy \"$2\" play - --start 0.1", "sh",
                          tone(1.0), SONIVEX_PROGRAM});
    EXPECT_EQ(result.exit_code, 2) << result.err;
    EXPECT_THAT(result.err, HasSubstr("sonivex: --start: \"-\" cannot be sought in"));
}

TEST_F(Play, QuietPrintsNothing) {
    const auto result = play({tone(0.5), "--quiet"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, "");
}

TEST_F(Play, OtherRatesAndChannelsArePlayedInStereo) {
    test::makeQuietSpeech(file("speech.wav"), 6, {"-ar", "96000"});
    const auto result = play({file("speech.wav"), "--effect", "surround"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_GT(played().size() / 2, kRate_hz);
}

TEST_F(Play, ACardThatVanishesIsReplacedAndThenGivenUp) {
    const test::ProcessOptions short_files{.file_size_limit_bytes = 32 * 1024, .working_folder = ""};
    const auto result = test::Process(playing("disk", file("card"), {tone(60.0)}), short_files).wait();
    EXPECT_EQ(result.exit_code, 15) << result.err;
    EXPECT_THAT(result.out, HasSubstr("the sound card is gone; playing goes on with the default one"));
    EXPECT_THAT(result.err, HasSubstr("sonivex: the sound card is gone"));
}

TEST_F(Play, ACardThatStallsIsReplacedAndThenGivenUp) {
    // A pipe that somebody has open and nobody reads.
    ASSERT_EQ(mkfifo(file("card").c_str(), 0600), 0);
    test::Process holder({"sh", "-c", "exec 3<>\"$1\"; exec sleep 60", "sh", file("card")});
    const auto start = std::chrono::steady_clock::now();
    const auto result = test::runProcess(playing("disk", file("card"), {tone(60.0)}));
    EXPECT_EQ(result.exit_code, 15) << result.err;
    EXPECT_THAT(result.out + result.err, HasSubstr("the sound card has stalled"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, seconds(30));
}

TEST_F(Play, AProgramThatWasStoppedPlaysOn) {
    test::Process player(playing("dummy", "", {tone(2.0)}));
    for (int i = 0; i < 500 && !player.handles(SIGINT); ++i) std::this_thread::sleep_for(milliseconds(10));
    std::this_thread::sleep_for(milliseconds(500));
    player.send(SIGSTOP);
    std::this_thread::sleep_for(milliseconds(3500));
    player.send(SIGCONT);
    const auto result = player.wait(seconds(20));
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("ended at 0:02"));
    EXPECT_THAT(result.out, Not(HasSubstr("stalled")));
}

TEST_F(Play, CtrlCEndsTheProgramAlsoWhenTheCardHasStalled) {
    ASSERT_EQ(mkfifo(file("card").c_str(), 0600), 0);
    test::Process holder({"sh", "-c", "exec 3<>\"$1\"; exec sleep 60", "sh", file("card")});
    test::Process player(playing("disk", file("card"), {tone(60.0)}));
    for (int i = 0; i < 500 && !player.handles(SIGINT); ++i) std::this_thread::sleep_for(milliseconds(10));
    std::this_thread::sleep_for(milliseconds(1500));  // the pipe is full by now
    player.send(SIGINT);
    const auto start = std::chrono::steady_clock::now();
    const auto result = player.wait(seconds(20));
    EXPECT_LT(std::chrono::steady_clock::now() - start, seconds(5));
    EXPECT_EQ(result.exit_code, 130) << result.err;
    EXPECT_THAT(result.err, HasSubstr("interrupted at 0:00"));
}

TEST_F(Play, CtrlCEndsTheProgramWhileItWaitsForAPipe) {
    ASSERT_EQ(mkfifo(file("input").c_str(), 0600), 0);
    tone(30.0);
    // The writer delivers the beginning and then nothing.
    test::Process writer({"sh", "-c", "exec 3>\"$1\"; head -c 400000 \"$2\" >&3; exec sleep 60", "sh",
                          file("input"), file("tone.flac")});
    test::Process player(playing("dummy", "", {file("input")}));
    for (int i = 0; i < 500 && !player.handles(SIGINT); ++i) std::this_thread::sleep_for(milliseconds(10));
    std::this_thread::sleep_for(milliseconds(1000));
    player.send(SIGINT);
    const auto result = player.wait(seconds(20));
    EXPECT_EQ(result.exit_code, 130) << result.err;
}

TEST_F(Play, SaysThatThereIsNoSuchCardOrDriver) {
    const auto result = test::runProcess(playing("none-such", "", {tone(1.0)}));
    EXPECT_EQ(result.exit_code, 15);
    EXPECT_THAT(result.err, HasSubstr("sonivex: cannot start the sound system: "));
    EXPECT_THAT(result.err, HasSubstr("none-such"));
}

TEST_F(Play, ADamagedFileIsPlayedAndReported) {
    tone(2.0);
    const std::string bytes = test::readFile(file("tone.flac"));
    test::writeFile(file("tone.flac"), bytes.substr(0, bytes.size() / 2));
    const auto result = play({file("tone.flac")});
    EXPECT_EQ(result.exit_code, 13);
    EXPECT_THAT(result.err, HasSubstr("is lost; the rest was played"));
    EXPECT_GT(played().size() / 2, kRate_hz / 2);
}

TEST_F(Play, RefusesWhatItDoesNotUnderstand) {
    for (const auto& [arguments, text] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{}, "FILE is required"},
             {{"x.wav", "--script", "1 zz"}, "unknown key \"zz\""},
             {{"x.wav", "--volume", "3"}, "--volume"},
             {{"x.wav", "--start", "-1"}, "--start"},
             {{"x.wav", "--effect", "suround"}, "did you mean \"surround\"?"},
             {{"x.wav", "--device", ""}, "--device"}}) {
        const auto result = play(arguments);
        EXPECT_EQ(result.exit_code, 2) << text;
        EXPECT_THAT(result.err, HasSubstr(text));
    }
    EXPECT_EQ(play({file("no-such-file.wav")}).exit_code, 3);
}

TEST_F(Play, NamesTheEffectThatThePluginLacks) {
    const auto result = play({tone(0.1), "--effect", "surround", "--plugin", SONIVEX_PLUGIN_WITHOUT_EFFECTS});
    EXPECT_EQ(result.exit_code, 11);
    EXPECT_EQ(result.err, "sonivex: the plug-in does not have surround\n");
}

TEST_F(Play, RefusesToStartBeyondTheEnd) {
    tone(1.0);
    for (const char* name : {"tone.wav", "tone.mka", "tone.flac"}) {
        if (file(name) != file("tone.flac")) test::ffmpeg({"-i", file("tone.flac"), file(name)});
        const auto result = play({file(name), "--start", "30"});
        EXPECT_EQ(result.exit_code, 2) << name;
        EXPECT_THAT(result.err, HasSubstr("--start: \"" + file(name) + "\" is only 0:01 long")) << name;
    }
}

TEST_F(Play, AFileThatReturnsToItsFirstFormatIsNoLongerConverted) {
    tone(1.0);
    test::ffmpeg({"-i", file("tone.flac"), "-c:a", "flac", "-f", "ogg", file("stereo.ogg")});
    test::ffmpeg({"-i", file("tone.flac"), "-ac", "1", "-c:a", "flac", "-f", "ogg", file("mono.ogg")});
    const std::string stereo = test::readFile(file("stereo.ogg"));
    test::writeFile(file("chain.ogg"), stereo + test::readFile(file("mono.ogg")) + stereo);
    const auto result = play({file("chain.ogg")});
    EXPECT_THAT(result.out,
                HasSubstr("the file goes on with 48000 Hz, mono; it is converted to 48000 Hz, stereo\n"));
    EXPECT_THAT(result.out, HasSubstr("the file goes on with 48000 Hz, stereo\n"));
}

TEST_F(Play, CtrlCEndsTheProgramBeforeItCanOpenAPipe) {
    ASSERT_EQ(mkfifo(file("input").c_str(), 0600), 0);
    test::Process player(playing("dummy", "", {file("input")}));
    for (int i = 0; i < 500 && !player.handles(SIGINT); ++i) std::this_thread::sleep_for(milliseconds(10));
    std::this_thread::sleep_for(milliseconds(500));
    player.send(SIGINT);
    const auto result = player.wait(seconds(20));
    EXPECT_EQ(result.exit_code, 130);
    EXPECT_THAT(result.err, HasSubstr("sonivex: interrupted before it played"));
}

TEST_F(Play, ListsTheCards) {
    const auto result = test::runProcess(playing("dummy", "", {"--list-devices"}));
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.out, Not(testing::IsEmpty()));
}

}  // namespace
