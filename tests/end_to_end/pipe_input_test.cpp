// Standard input and named pipes as IN.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "end_to_end/media/decoded_input.h"
#include "end_to_end/media/media.h"
#include "support/processes/loopback_listener.h"

namespace {

using testing::HasSubstr;

constexpr int kInputDamaged = 13;

using PipeInput = test::ReadingTest;

TEST_F(PipeInput, StandardInputGivesTheSamplesOfTheFile) {
    for (const char* name : {"in.wav", "in.flac", "in.mkv"}) {
        SCOPED_TRACE(name);
        // Samples of 16 bits, which reach the effect without dither.
        const bool is_wav = std::string(name) == "in.wav";
        test::makeNoise(file(name), 2, {"-c:a", is_wav ? "pcm_s16le" : "flac"});
        for (const char* stdin_name : {"-", "pipe:0"}) {
            const auto read = readInput(stdin_name, {}, "<'" + file(name) + "'");
            EXPECT_EQ(read.exit_code, 0) << read.notes;
            EXPECT_EQ(read.samples, test::decode16(file(name)));
        }
    }
}

// A program that writes a WAV file into a pipe cannot go back to enter its length.
TEST_F(PipeInput, AWavFileOfUnknownLengthIsWholeUnlessItEndsWithinAFrame) {
    test::makeNoise(file("noise.wav"), 1.0321, {"-c:a", "pcm_s16le"});
    std::string bytes = test::readFile(file("noise.wav"));
    for (const char* chunk : {"RIFF", "data"}) bytes.replace(bytes.find(chunk) + 4, 4, "\xFF\xFF\xFF\xFF");
    for (const auto& name : {std::string("-"), file("in.wav")}) {
        SCOPED_TRACE(name);
        test::writeFile(file("in.wav"), bytes);
        const std::string redirection = "<'" + file("in.wav") + "'";
        const auto whole = readInput(name, {}, redirection);
        EXPECT_EQ(whole.exit_code, 0) << whole.notes;
        EXPECT_EQ(whole.samples, test::decode16(file("noise.wav")));
        test::writeFile(file("in.wav"), bytes.substr(0, bytes.size() - 1));
        EXPECT_EQ(readInput(name, {}, redirection).exit_code, kInputDamaged);
    }
}

// The same bytes are cut off if the file's header promises more.
TEST_F(PipeInput, AWavFileThatIsCutOffIsDamaged) {
    test::makeNoise(file("noise.wav"), 2, {"-c:a", "pcm_s16le"});
    const std::string bytes = test::readFile(file("noise.wav"));
    test::writeFile(file("in.wav"), bytes.substr(0, bytes.size() - 1000));
    for (const auto& name : {std::string("-"), file("in.wav")})
        EXPECT_EQ(readInput(name, {}, "<'" + file("in.wav") + "'").exit_code, kInputDamaged) << name;
}

TEST_F(PipeInput, ANamedPipeGivesTheSamplesOfTheFile) {
    test::makeNoise(file("in.flac"), 2);
    ASSERT_EQ(mkfifo(file("pipe").c_str(), 0600), 0);
    test::Process writer({"cp", file("in.flac"), file("pipe")});
    const auto read = readInput(file("pipe"));
    EXPECT_EQ(read.exit_code, 0) << read.notes;
    EXPECT_EQ(read.samples, test::decode16(file("in.flac")));
}

TEST_F(PipeInput, AFileOnStandardInputMayHaveItsIndexAtTheEnd) {
    test::makeNoise(file("in.m4a"), 2, {"-c:a", "alac"});
    EXPECT_EQ(readInput("-", {}, "<'" + file("in.m4a") + "'").samples, test::decode16(file("in.m4a")));
}

TEST_F(PipeInput, ClosedOrEmptyStandardInputIsAnError) {
    const auto closed = runRedirected("<&-", {"-", file("out.wav"), "--quiet"});
    EXPECT_EQ(closed.exit_code, 3);
    EXPECT_THAT(closed.err, HasSubstr("standard input is closed"));
    const auto empty = runRedirected("</dev/null", {"-", file("out.wav"), "--quiet"});
    EXPECT_EQ(empty.exit_code, 3);
    EXPECT_THAT(empty.err, HasSubstr("cannot open \"-\""));
}

// A session description would otherwise wait for packets from the network.
TEST_F(PipeInput, MayNotNameOtherFilesOrAddresses) {
    test::makeNoise(file("other.wav"), 2);
    const test::LoopbackListener listener;
    const std::string segments = "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n";
    const std::pair<const char*, std::string> descriptions[] = {
        {"list", "ffconcat version 1.0\nfile other.wav\n"},
        {"segments", segments + "http://" + listener.address() + "/a.ts\n#EXT-X-ENDLIST\n"},
        {"local segments", segments + "other.wav\n#EXT-X-ENDLIST\n"},
        {"session", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=-\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 9 RTP/AVP 0\n"}};
    for (const auto& [name, text] : descriptions) {
        SCOPED_TRACE(name);
        test::writeFile(file("description"), text);
        const auto run = runRedirected("<'" + file("description") + "'", {"-", file("out.wav"), "--quiet"});
        EXPECT_EQ(run.exit_code, 3) << run.err;
        EXPECT_THAT(run.err, HasSubstr("cannot open \"-\""));
        EXPECT_FALSE(listener.wasConnected());
        EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
    }
}

TEST_F(PipeInput, APipeThatNobodyWritesCanBeInterrupted) {
    ASSERT_EQ(mkfifo(file("pipe").c_str(), 0600), 0);
    test::Process program(command({file("pipe"), file("out.wav")}));
    while (program.isRunning() && !program.handles(SIGINT)) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(program.isRunning());
    program.send(SIGINT);
    EXPECT_EQ(program.wait(std::chrono::seconds(10)).exit_code, 130);
}

}  // namespace
