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

// Returns a WAV file whose header states these lengths of the file and of its audio.
std::string withLengths(std::string wav, const std::string& file_length, const std::string& audio_length) {
    wav.replace(wav.find("RIFF") + 4, 4, file_length);
    wav.replace(wav.find("data") + 4, 4, audio_length);
    return wav;
}

/** Reads a file by its name, from standard input and from a pipe. */
class WaysOfReading : public test::ReadingTest {
  protected:
    // Returns the samples, and expects the same ones and the same exit code each time.
    std::vector<int16_t> read(const std::string& bytes, int exit_code) {
        test::writeFile(file("in"), bytes);
        const auto by_name = readInput(file("in"));
        EXPECT_EQ(by_name.exit_code, exit_code) << by_name.notes;
        const auto by_url = readInput("file:" + file("in"));
        EXPECT_EQ(by_url.exit_code, exit_code) << by_url.notes;
        const auto redirected = readInput("-", {}, "<'" + file("in") + "'");
        EXPECT_EQ(redirected.exit_code, exit_code) << redirected.notes;
        if (!std::filesystem::exists(file("pipe"))) mkfifo(file("pipe").c_str(), 0600);
        test::Process writer({"cp", file("in"), file("pipe")});
        const auto piped = readInput(file("pipe"));
        EXPECT_EQ(piped.exit_code, exit_code) << piped.notes;
        for (const auto* other : {&by_url, &redirected, &piped}) EXPECT_EQ(other->samples, by_name.samples);
        return by_name.samples;
    }
};

// The longer file is read on after libavformat has looked at its beginning.
class WavOfUnknownLength : public WaysOfReading, public testing::WithParamInterface<double> {};

TEST_P(WavOfUnknownLength, IsWholeUnlessItEndsWithinAFrame) {
    test::makeNoise(file("noise.wav"), GetParam(), {"-c:a", "pcm_s16le"});
    const std::string wav = test::readFile(file("noise.wav"));
    const auto samples = test::decode16(file("noise.wav"));
    const std::pair<std::string, std::string> lengths[] = {
        {"\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\xFF"},  // as FFmpeg writes them
        {{"\x24\0\0\x80", 4}, {"\0\0\0\x80", 4}},  // as ALSA's recorder does
    };
    for (const auto& [file_length, audio_length] : lengths) {
        SCOPED_TRACE(testing::PrintToString(file_length));
        const std::string unknown = withLengths(wav, file_length, audio_length);
        EXPECT_EQ(read(unknown, 0), samples);
        read(unknown.substr(0, unknown.size() - 1), kInputDamaged);
    }
}

TEST_P(WavOfUnknownLength, MayHaveSamplesOf24Bits) {
    test::makeNoise(file("noise.wav"), GetParam(), {"-c:a", "pcm_s24le"});
    const std::string wav = test::readFile(file("noise.wav"));
    const auto samples = read(wav, 0);
    EXPECT_FALSE(samples.empty());
    EXPECT_EQ(read(withLengths(wav, "\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\xFF"), 0), samples);
}

TEST_P(WavOfUnknownLength, IsDamagedIfItsAudioHasALength) {
    test::makeNoise(file("noise.wav"), GetParam(), {"-c:a", "pcm_s16le"});
    const std::string wav = test::readFile(file("noise.wav"));
    const std::string audio_length = wav.substr(wav.find("data") + 4, 4);
    for (const std::string& file_length : {std::string("\xFF\xFF\xFF\xFF"), std::string(4, '\0')})
        read(withLengths(wav, file_length, audio_length).substr(0, wav.size() - 1000), kInputDamaged);
}

TEST_P(WavOfUnknownLength, HasACounterpartInCaf) {
    test::makeNoise(file("noise.caf"), GetParam(), {"-c:a", "pcm_s16le"});
    std::string caf = test::readFile(file("noise.caf"));
    const auto samples = test::decode16(file("noise.caf"));
    read(caf.substr(0, caf.size() - 1000), kInputDamaged);
    caf.replace(caf.find("data") + 4, 8, std::string(8, '\xFF'));
    EXPECT_EQ(read(caf, 0), samples);
    read(caf.substr(0, caf.size() - 1), kInputDamaged);
}

INSTANTIATE_TEST_SUITE_P(, WavOfUnknownLength, testing::Values(0.1321, 1.3321));

// The same bytes are cut off if the file's header promises more.
TEST_F(WaysOfReading, AWavFileThatIsCutOffIsDamaged) {
    test::makeNoise(file("noise.wav"), 2, {"-c:a", "pcm_s16le"});
    const std::string bytes = test::readFile(file("noise.wav"));
    read(bytes.substr(0, bytes.size() - 1000), kInputDamaged);
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
