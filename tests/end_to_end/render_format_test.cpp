// Renders every common file format. The output decodes to the same recording, only louder.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

struct Format {
    std::string name;
    int channels;
    std::string input;                         // file name
    std::vector<std::string> input_arguments;  // of ffmpeg, to make the input
    std::string output;
    std::string output_codec;          // name in ffprobe
    std::string output_sample_format;  // name in ffprobe
    int extra_frames = 0;              // allowed excess length of a format that holds only whole blocks
};

void PrintTo(const Format& format, std::ostream* stream) {
    *stream << format.name;
}

class RenderFormat : public test::RenderTest, public testing::WithParamInterface<Format> {};
class RenderSamples : public test::RenderTest {};

TEST_P(RenderFormat, KeepsRateChannelsAndLengthAndRaisesTheLevel) {
    const Format& format = GetParam();
    const std::string in = file(format.input);
    const std::string out = file(format.output);
    test::makeQuietSpeech(in, format.channels, format.input_arguments);
    const auto report = render({in, out});

    const auto stream_in = test::probe(in)["streams"][0];
    const auto stream_out = test::probe(out)["streams"][0];
    EXPECT_EQ(stream_out["codec_name"], format.output_codec);
    EXPECT_EQ(stream_out["sample_fmt"], format.output_sample_format);
    EXPECT_EQ(stream_out["sample_rate"], stream_in["sample_rate"]);
    EXPECT_EQ(stream_out["channels"], format.channels);

    const auto samples_in = test::decode(in);
    const auto samples_out = test::decode(out);
    const auto frames_in = static_cast<int64_t>(samples_in.size()) / format.channels;
    const auto frames_out = static_cast<int64_t>(samples_out.size()) / format.channels;
    EXPECT_GE(frames_out, frames_in);
    EXPECT_LE(frames_out, frames_in + format.extra_frames);
    EXPECT_EQ(report["input"]["frames"], frames_in);
    EXPECT_EQ(report["output"]["frames"], frames_in);

    // The speech peaks at about -30 dBFS, so the gain stays at 20 dB throughout. Lossy encoders remove some
    // of the quietest sound, and the second pass removes more than the first.
    const auto energy = [](const std::vector<float>& samples) {
        double sum = 0.0;
        for (const float sample : samples) sum += static_cast<double>(sample) * sample;
        return sum;
    };
    EXPECT_NEAR(10.0 * std::log10(energy(samples_out) / energy(samples_in)), 20.0, 0.5);
    EXPECT_NEAR(
        report["output"]["integrated_lufs"].get<double>() - report["input"]["integrated_lufs"].get<double>(),
        20.0, 0.5);
    EXPECT_EQ(report["frames_dropped"], 0);
    EXPECT_EQ(report["frames_bypassed"], 0);
    EXPECT_EQ(report["decode_errors"], 0);
}

constexpr int kAacBlock = 1024;
constexpr int kOpusBlock = 960;

INSTANTIATE_TEST_SUITE_P(
    Files, RenderFormat,
    testing::Values(
        Format{"Wav16", 2, "in.wav", {}, "out.wav", "pcm_s16le", "s16"},
        Format{"Wav24", 2, "in.wav", {"-c:a", "pcm_s24le"}, "out.wav", "pcm_s24le", "s32"},
        Format{"Wav32", 2, "in.wav", {"-c:a", "pcm_s32le"}, "out.wav", "pcm_s32le", "s32"},
        Format{"WavFloat", 2, "in.wav", {"-c:a", "pcm_f32le"}, "out.wav", "pcm_f32le", "flt"},
        Format{"WavDouble", 1, "in.wav", {"-c:a", "pcm_f64le"}, "out.wav", "pcm_f64le", "dbl"},
        Format{"Wav16kHz", 1, "in.wav", {"-ar", "16000"}, "out.wav", "pcm_s16le", "s16"},
        Format{"Wav44kHz", 2, "in.wav", {"-ar", "44100"}, "out.wav", "pcm_s16le", "s16"},
        Format{"Wav5_1", 6, "in.wav", {}, "out.wav", "pcm_s16le", "s16"},
        Format{"Wav7_1", 8, "in.wav", {}, "out.wav", "pcm_s16le", "s16"},
        Format{"Flac16", 2, "in.flac", {"-sample_fmt", "s16"}, "out.flac", "flac", "s16"},
        Format{"Flac24", 2, "in.flac", {"-sample_fmt", "s32"}, "out.flac", "flac", "s32"},
        Format{"Flac5_1", 6, "in.flac", {"-sample_fmt", "s16"}, "out.flac", "flac", "s16"},
        Format{"Flac7_1", 8, "in.flac", {"-sample_fmt", "s16"}, "out.flac", "flac", "s16"},
        Format{"Mp3ToMp3", 2, "in.mp3", {"-b:a", "192k"}, "out.mp3", "mp3", "fltp"},
        Format{"Mp3ToWav", 2, "in.mp3", {"-b:a", "192k"}, "out.wav", "pcm_f32le", "flt"},
        Format{"AacInMp4", 2, "in.mp4", {"-b:a", "192k"}, "out.mp4", "aac", "fltp", 2 * kAacBlock},
        Format{"Aac5_1InM4a", 6, "in.m4a", {"-b:a", "384k"}, "out.m4a", "aac", "fltp", 2 * kAacBlock},
        Format{"AacToWav", 2, "in.mp4", {"-b:a", "192k"}, "out.wav", "pcm_f32le", "flt"},
        Format{"OpusInMkvToFlac", 2, "in.mkv", {"-c:a", "libopus"}, "out.flac", "flac", "s32"},
        Format{"OpusInMkvToMkv", 2, "in.mkv", {"-c:a", "libopus"}, "out.mkv", "opus", "fltp", kOpusBlock},
        Format{"OpusInMkvToOpus", 2, "in.mkv", {"-c:a", "libopus"}, "out.opus", "opus", "fltp"},
        Format{"Opus7_1InMkv", 8, "in.mkv", {"-c:a", "libopus"}, "out.wav", "pcm_f32le", "flt"},
        Format{"NoExtension", 2, "in.wav", {}, "out", "pcm_s16le", "s16"}),
    [](const testing::TestParamInfo<Format>& test) { return test.param.name; });

// Below the limiting threshold the gain of 20 dB is a factor of ten. Each of the two limiters behind it
// settles at a gain of 0.0999 / 0.1001. Each output sample therefore follows from its input sample up to two
// roundings.
TEST_F(RenderSamples, KeepsEverySampleAtItsPosition) {
    const std::string in = file("in.wav");
    test::makeQuietSpeech(in, 2);
    render({in, file("out.wav")});
    const auto before = test::decode(in);
    const auto after = test::decode(file("out.wav"));
    ASSERT_EQ(after.size(), before.size());
    const float idle_limiter = 0.0999F / 0.1001F;
    const float gain = 10.0F * idle_limiter * idle_limiter;
    const float tolerance = 3.0F / 32768.0F;
    size_t wrong = 0;
    for (size_t i = 0; i < before.size(); ++i)
        wrong += std::abs(after[i] - gain * before[i]) > tolerance ? 1 : 0;
    EXPECT_EQ(wrong, 0U);
}

// Each channel holds a tone of a different pitch, quiet enough to stay below the limiting threshold.
TEST_F(RenderSamples, KeepsEveryChannelOfEveryLayoutAtItsPosition) {
    const std::vector<std::pair<std::string, size_t>> layouts = {
        {"5.1", 6}, {"5.1(side)", 6}, {"6.0", 6},       {"6.0(front)", 6},    {"hexagonal", 6},
        {"7.1", 8}, {"octagonal", 8}, {"7.1(wide)", 8}, {"7.1(wide-side)", 8}};
    const std::string in = file("in.wav");
    const std::string out = file("out.wav");
    for (const auto& [layout, channels] : layouts) {
        SCOPED_TRACE(layout);
        std::string tones;
        for (size_t c = 0; c < channels; ++c)
            tones += (c > 0 ? "|" : "") + ("0.02*sin(2*PI*" + std::to_string(300 + 100 * c)) + "*t)";
        test::ffmpeg({"-f", "lavfi", "-i", "aevalsrc=" + tones + ":c=" + layout + ":d=0.5:s=48000", "-c:a",
                      "pcm_f32le", in});
        const auto report = render({in, out, "--force"});
        EXPECT_EQ(report["output"]["channel_layout"], layout);
        EXPECT_EQ(test::probe(out)["streams"][0]["channel_layout"], layout);
        const auto before = test::decode(in);
        const auto after = test::decode(out);
        ASSERT_EQ(after.size(), before.size());
        // The sum covers whole periods of every tone, so the tones are orthogonal.
        const size_t start = channels * 4800;
        for (size_t to = 0; to < channels; ++to) {
            for (size_t from = 0; from < channels; ++from) {
                double energy = 0.0;
                double product = 0.0;
                for (size_t i = start; i < before.size(); i += channels) {
                    energy += static_cast<double>(before[i + from]) * before[i + from];
                    product += static_cast<double>(after[i + to]) * before[i + from];
                }
                EXPECT_NEAR(product / energy, to == from ? 10.0 : 0.0, 0.1) << from << " in " << to;
            }
        }
    }
}

TEST_F(RenderSamples, KeepsEightBitSamples) {
    const std::string in = file("in.wav");
    test::ffmpeg(
        {"-f", "lavfi", "-i", "sine=frequency=440:duration=1:sample_rate=48000", "-c:a", "pcm_u8", in});
    render({in, file("out.wav")});
    const auto stream = test::probe(file("out.wav"))["streams"][0];
    EXPECT_EQ(stream["codec_name"], "pcm_u8");
    EXPECT_EQ(test::decode(file("out.wav")).size(), 48000U);
}

TEST_F(RenderSamples, ConvertsARateThatTheEncoderLacksAndReportsIt) {
    const std::string in = file("in.wav");
    test::makeQuietSpeech(in, 2, {"-ar", "44100"});
    const auto report = render({in, file("out.opus")});
    EXPECT_EQ(report["output"]["sample_rate_hz"], 48000);
    EXPECT_EQ(report["notes"].size(), 1U);
    const double seconds = static_cast<double>(test::decode(in).size()) / 2 / 44100;
    EXPECT_NEAR(report["length_seconds"].get<double>(), seconds, 0.001);
}

TEST_F(RenderSamples, PlaysACodecWithOneFixedRateAtTheRightSpeed) {
    const std::string in = file("in.wav");
    test::makeQuietSpeech(in, 1);
    const auto report = render({in, file("out.g722")});
    EXPECT_EQ(report["output"]["sample_rate_hz"], 16000);
    EXPECT_EQ(report["notes"].size(), 1U);
    const double seconds = static_cast<double>(test::decode(in).size()) / 48000;
    EXPECT_NEAR(static_cast<double>(test::decode(file("out.g722")).size()) / 16000, seconds, 0.01);
}

}  // namespace
