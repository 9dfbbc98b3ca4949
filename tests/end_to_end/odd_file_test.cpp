// Files that are valid but unusual.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/decoded_input.h"
#include "end_to_end/media/media.h"
#include "support/processes/loopback_listener.h"

namespace {

using testing::HasSubstr;

using OddFile = test::ReadingTest;

TEST_F(OddFile, WithoutSamplesGivesAnEmptyOutput) {
    test::makeNoise(file("in.wav"), 1);
    for (const char* name : {"empty.wav", "empty.flac", "empty.aiff"}) {
        SCOPED_TRACE(name);
        test::ffmpeg({"-i", file("in.wav"), "-af", "atrim=end_sample=0", file(name)});
        const auto report = render({file(name), file("out.wav"), "--force"});
        EXPECT_EQ(report["input"]["frames"], 0);
        EXPECT_EQ(report["output"]["frames"], 0);
        EXPECT_THAT(report["notes"].dump(), HasSubstr("has no samples"));
        EXPECT_EQ(test::probe(file("out.wav"))["streams"][0]["sample_rate"], "48000");
    }
}

TEST_F(OddFile, InTheNetworkIsNotOpened) {
    const auto result = run({"http://127.0.0.1:9/in.wav", file("out.wav"), "--quiet"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_THAT(result.err, HasSubstr("only files can be read"));
}

TEST_F(OddFile, ThatListsOthersReadsThoseBesideItButNoAddress) {
    test::makeNoise(file("other.wav"), 2);
    test::writeFile(file("list"), "ffconcat version 1.0\nfile other.wav\n");
    EXPECT_EQ(readInput(file("list")).samples, test::decode16(file("other.wav")));
    const test::LoopbackListener listener;
    test::writeFile(file("addresses.m3u8"), "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nhttp://" +
                                                listener.address() + "/a.ts\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(run({file("addresses.m3u8"), file("out.wav"), "--quiet"}).exit_code, 3);
    EXPECT_FALSE(listener.wasConnected());
    test::writeFile(file("session"),
                    "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=-\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 9 RTP/AVP 0\n");
    EXPECT_EQ(run({file("session"), file("out.wav"), "--quiet"}).exit_code, 3);
}

TEST_F(OddFile, WithThreeHundredChannelsIsRefused) {
    // 300 channels of 48 frames of silence behind a RIFF header.
    const auto little = [](uint64_t number, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> (8 * i) & 0xFF);
        return text;
    };
    const uint64_t size = 48 * 300 * 2;
    test::writeFile(file("in.wav"), "RIFF" + little(size + 36, 4) + "WAVEfmt " + little(16, 4) +
                                        little(1, 2) + little(300, 2) + little(48000, 4) +
                                        little(48000 * 600, 4) + little(600, 2) + little(16, 2) + "data" +
                                        little(size, 4) + std::string(size, '\0'));
    const auto result = run({file("in.wav"), file("out.wav"), "--quiet"});
    EXPECT_EQ(result.exit_code, 5) << result.err;
    EXPECT_THAT(result.err, HasSubstr("300"));
}

}  // namespace
