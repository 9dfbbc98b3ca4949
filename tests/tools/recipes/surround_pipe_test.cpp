#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sonivex/effect.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"
#include "support/signals/signals.h"

namespace {

using test::Pcm;
using testing::HasSubstr;

constexpr int kBlock_frames = 240;

class SurroundPipe : public testing::Test {
  protected:
    /** Runs the program with bytes as its standard input. */
    test::ProcessResult run(const std::string& arguments, const std::string& bytes,
                            const std::string& to = "\"$2\"") {
        test::writeFile(in_, bytes);
        return test::runProcess(
            {"sh", "-c", "exec \"$0\" " + arguments + " <\"$1\" >" + to, SURROUND_PIPE, in_, out_});
    }

    test::TemporaryFolder folder_;
    const std::string in_ = folder_.file("in"), out_ = folder_.file("out");
};

std::string bytesOf(const Pcm& samples) {
    std::string bytes(samples.size() * sizeof(Pcm::value_type), '\0');
    if (!samples.empty()) std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

// Renders the samples and silence after them in whole blocks. The result is as long as the input and its
// tail.
Pcm rendered(const Pcm& samples, int channels, int type) {
    SonivexEffect* effect = nullptr;
    if (sonivex_create_surround(&effect, channels, 48000, type, 2, 1) != SONIVEX_OK) return {};
    const auto frames = samples.size() / static_cast<std::size_t>(channels);
    const std::size_t length = frames + static_cast<std::size_t>(sonivex_tail_frames(effect));
    Pcm in = samples, out;
    in.resize((length / kBlock_frames + 1) * kBlock_frames * static_cast<std::size_t>(channels));
    out.resize((length / kBlock_frames + 1) * kBlock_frames * 2);
    for (std::size_t first = 0; first <= length; first += kBlock_frames) {
        sonivex_process_int16(effect, &in[first * static_cast<std::size_t>(channels)], &out[first * 2],
                              kBlock_frames);
    }
    sonivex_release(effect);
    out.resize(length * 2);
    return out;
}

TEST_F(SurroundPipe, PutsOutTheWholeSoundOfStreamsOfAnyLength) {
    for (const int frames : {0, 1, 239, 240, 241, 480, 5003}) {
        for (const int channels : {2, 6, 8}) {
            const Pcm samples = test::noise(7, frames * channels, 9000);
            const auto result = run(std::to_string(channels) + " 48000 3DSurround", bytesOf(samples));
            ASSERT_EQ(result.exit_code, 0) << result.err;
            EXPECT_TRUE(test::readFile(out_) == bytesOf(rendered(samples, channels, 1)))
                << channels << " channels, " << frames << " frames";
        }
    }
}

TEST_F(SurroundPipe, RendersMegaBassInTheMediumRoom) {
    const Pcm samples = test::noise(8, 3000 * 2, 9000);
    ASSERT_EQ(run("2 48000 MegaBass", bytesOf(samples)).exit_code, 0);
    EXPECT_TRUE(test::readFile(out_) == bytesOf(rendered(samples, 2, 13)));
}

TEST_F(SurroundPipe, RefusesWrongCommands) {
    for (const char* arguments : {"", "2 48000", "2 48000 Stereo", "2 48000 3DSurround more"}) {
        const auto result = run(arguments, "");
        EXPECT_EQ(result.exit_code, 2) << arguments;
        EXPECT_THAT(result.err, HasSubstr("usage: surround-pipe"));
    }
    for (const char* arguments : {"3 48000 3DSurround", "2 47999 3DSurround", "2 48000Hz 3DSurround",
                                  "-2 48000 MegaBass", "99999999999999999999 48000 3DSurround"}) {
        const auto result = run(arguments, "");
        EXPECT_EQ(result.exit_code, 1) << arguments;
        EXPECT_THAT(result.err, HasSubstr("surround-pipe: ")) << arguments;
        EXPECT_EQ(test::readFile(out_), "") << arguments;
    }
}

TEST_F(SurroundPipe, RendersTheWholeFramesOfAStreamThatEndsWithinOne) {
    const Pcm samples = test::noise(9, 100 * 2, 9000);
    const auto result = run("2 48000 3DSurround", bytesOf(samples) + "abc");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("the input ends within a frame"));
    EXPECT_TRUE(test::readFile(out_) == bytesOf(rendered(samples, 2, 1)));
}

TEST_F(SurroundPipe, ReportsThatItCannotWrite) {
    const auto result = run("2 48000 3DSurround", bytesOf(test::noise(10, 48000, 9000)), "/dev/full");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("cannot write the output"));
}

}  // namespace
