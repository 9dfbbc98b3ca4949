// Sample rates and layouts that the effects do not support are converted on the way to them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RenderConversion : public test::RenderTest {
  protected:
    // Writes a second of tones at -40 dBFS: channel c has 500 Hz + 150 Hz * c.
    std::string makeTones(const std::string& name, const std::string& layout, int channels, int rate_hz) {
        std::string tones;
        for (int c = 0; c < channels; ++c)
            tones +=
                (c > 0 ? "|" : "") + std::string("0.01*sin(2*PI*t*") + std::to_string(500 + 150 * c) + ")";
        test::ffmpeg({"-f", "lavfi", "-i",
                      "aevalsrc=" + tones + ":c=" + layout + ":s=" + std::to_string(rate_hz) + ":d=1", "-c:a",
                      "pcm_s24le", file(name)});
        return file(name);
    }

    // Puts the sound of a mono file into a layout with ffmpeg's mixer, by the gains in `pan`. Gains of 1 must
    // be written as 0.999999, because ffmpeg would otherwise copy channels and lose the layout's order.
    std::string place(const std::string& name, const std::string& in, const std::string& pan) {
        test::ffmpeg({"-i", in, "-af", "pan=" + pan, "-c:a", "pcm_s24le", file(name)});
        return file(name);
    }
};

// The normalizer raises quiet sound by 20 dB; its two limiters take 0.035 dB once they have settled.
constexpr double kGain_db = 19.965;

struct Tone {
    double gain_db;       // in relation to the tone that makeTones writes
    double late_samples;  // at the signal's rate
};

Tone toneOf(const std::vector<float>& samples, int channel, int channels, double frequency_hz, int rate_hz) {
    const size_t frames = samples.size() / static_cast<size_t>(channels);
    double s = 0.0;
    double c = 0.0;
    // Whole periods from the middle half second.
    const size_t first = frames / 4;
    const auto length = static_cast<size_t>(rate_hz / 2);
    for (size_t i = first; i < first + length; ++i) {
        const double angle = 2.0 * std::numbers::pi * frequency_hz * static_cast<double>(i) / rate_hz;
        const double sample = samples[i * static_cast<size_t>(channels) + static_cast<size_t>(channel)];
        s += sample * std::sin(angle);
        c += sample * std::cos(angle);
    }
    const double scale = 2.0 / static_cast<double>(length);
    return {20.0 * std::log10(std::hypot(s, c) * scale / 0.01),
            -std::atan2(c, s) / (2.0 * std::numbers::pi * frequency_hz) * rate_hz};
}

double energyOf(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float sample : samples) sum += static_cast<double>(sample) * sample;
    return sum;
}

TEST_F(RenderConversion, ResamplesRatesThatTheEffectDoesNotSupport) {
    struct Case {
        int from_hz;
        int to_hz;
    };
    for (const auto [from_hz, to_hz] : {Case{8000, 16000}, Case{22050, 44100}, Case{32000, 48000},
                                        Case{88200, 44100}, Case{96000, 48000}, Case{192000, 48000}}) {
        SCOPED_TRACE(from_hz);
        const std::string out = file(std::to_string(from_hz) + "-out.wav");
        const auto report = render({makeTones(std::to_string(from_hz) + ".wav", "stereo", 2, from_hz), out});
        EXPECT_THAT(report["notes"],
                    ElementsAre("IN has " + std::to_string(from_hz) + " Hz; the normalizer gets " +
                                std::to_string(to_hz) + " Hz"));
        EXPECT_EQ(report["output"]["sample_rate_hz"], to_hz);
        const auto samples = test::decode(out);
        ASSERT_EQ(samples.size(), 2U * static_cast<size_t>(to_hz));
        for (const int channel : {0, 1}) {
            const Tone tone = toneOf(samples, channel, 2, 500 + 150 * channel, to_hz);
            EXPECT_NEAR(tone.gain_db, kGain_db, 0.02);
            EXPECT_NEAR(tone.late_samples, 0.0, 0.02);
        }
    }
}

TEST_F(RenderConversion, ObeysTheRateAndTheLayoutOfTheUser) {
    const std::string in = makeTones("in.wav", "5.1", 6, 48000);
    const auto report = render({in, file("out.wav"), "--rate", "44100", "--layout", "stereo"});
    EXPECT_THAT(report["notes"], ElementsAre("IN has 5.1; the normalizer gets stereo",
                                             "IN has 48000 Hz; the normalizer gets 44100 Hz"));
    const auto stream = test::probe(file("out.wav"))["streams"][0];
    EXPECT_EQ(stream["channels"], 2);
    EXPECT_EQ(stream["sample_rate"], "44100");
    // Left is the left loudspeaker, and the centre (800 Hz) and the back left (1100 Hz) at -3 dB.
    const auto samples = test::decode(file("out.wav"));
    EXPECT_NEAR(toneOf(samples, 0, 2, 500, 44100).gain_db, kGain_db, 0.02);
    EXPECT_NEAR(toneOf(samples, 0, 2, 800, 44100).gain_db, kGain_db - 3.01, 0.02);
    EXPECT_NEAR(toneOf(samples, 0, 2, 1100, 44100).gain_db, kGain_db - 3.01, 0.02);
    EXPECT_LT(toneOf(samples, 0, 2, 950, 44100).gain_db, -30.0);  // LFE
    EXPECT_LT(toneOf(samples, 0, 2, 650, 44100).gain_db, -30.0);  // right
}

TEST_F(RenderConversion, NormalizesEveryLayoutInItsOwnChannels) {
    struct Case {
        const char* layout;
        int channels;
    };
    for (const auto& [layout, channels] :
         {Case{"2.1", 3}, Case{"3.0", 3}, Case{"4.0", 4}, Case{"5.0", 5}, Case{"6.1", 7}}) {
        SCOPED_TRACE(layout);
        const std::string out = file(std::string(layout) + "-out.wav");
        const auto report = render({makeTones(std::string(layout) + ".wav", layout, channels, 48000), out});
        EXPECT_EQ(report["output"]["channel_layout"], layout);
        EXPECT_EQ(report["notes"].size(), 1U);
        const auto samples = test::decode(out);
        ASSERT_EQ(samples.size(), static_cast<size_t>(channels) * 48000U);
        for (int channel = 0; channel < channels; ++channel) {
            const Tone tone = toneOf(samples, channel, channels, 500 + 150 * channel, 48000);
            EXPECT_NEAR(tone.gain_db, kGain_db, 0.02) << channel;
            EXPECT_NEAR(tone.late_samples, 0.0, 0.02) << channel;
        }
    }
}

// Each loudspeaker of a layout sounds alone. Surround must make of it what it makes of the same sound at the
// same place in 5.1 or 7.1, into which ffmpeg puts it by gains that are written here.
TEST_F(RenderConversion, SurroundHearsEveryLoudspeakerAtItsPlaceAndLevel) {
    struct Case {
        const char* layout;
        const char* loudspeaker;
        const char* same;  // ffmpeg's pan
    };
    const std::string tone = makeTones("tone.wav", "mono", 1, 48000);
    for (const auto& [layout, loudspeaker, same] :
         {Case{"2.1", "FL", "5.1|FL=0.999999*c0"}, Case{"3.0", "FC", "5.1|FC=0.999999*c0"},
          Case{"4.0", "BC", "5.1|BL=0.7071068*c0|BR=0.7071068*c0"}, Case{"quad", "BR", "5.1|BR=0.999999*c0"},
          Case{"5.0(side)", "SL", "5.1|BL=0.999999*c0"}, Case{"hexagonal", "FR", "5.1|FR=0.999999*c0"},
          Case{"hexagonal", "BC", "5.1|BL=0.7071068*c0|BR=0.7071068*c0"},
          Case{"6.1", "SR", "7.1|SR=0.999999*c0"}, Case{"6.1", "BC", "7.1|BL=0.7071068*c0|BR=0.7071068*c0"},
          Case{"7.1(wide)", "FL", "7.1|FL=0.999999*c0"},
          Case{"7.1(wide)", "FLC", "7.1|FL=0.7071068*c0|FC=0.7071068*c0"},
          Case{"octagonal", "BL", "7.1|BL=0.999999*c0"}}) {
        SCOPED_TRACE(std::string(layout) + " " + loudspeaker);
        const std::string in =
            place("in.wav", tone, std::string(layout) + "|" + loudspeaker + "=0.999999*c0");
        const std::string like = place("like.wav", tone, same);
        render({in, file("out.wav"), "--effect", "surround", "--force"});
        render({like, file("like-out.wav"), "--effect", "surround", "--force"});
        const auto actual = test::decode(file("out.wav"));
        const auto expected = test::decode(file("like-out.wav"));
        ASSERT_EQ(actual.size(), expected.size());
        EXPECT_GT(energyOf(expected), 0.1);
        std::vector<float> difference(actual.size());
        for (size_t i = 0; i < actual.size(); ++i) difference[i] = actual[i] - expected[i];
        EXPECT_LT(10.0 * std::log10(energyOf(difference) / energyOf(expected)), -40.0);
    }
}

TEST_F(RenderConversion, RaisesSpeechInASurroundMix) {
    const std::string in = makeTones("in.wav", "5.1", 6, 96000);
    const auto report = render({in, file("out.wav"), "--effect", "dialogue"});
    EXPECT_THAT(report["notes"], ElementsAre("IN has 5.1; dialogue enhancement gets stereo",
                                             "IN has 96000 Hz; dialogue enhancement gets 48000 Hz"));
    EXPECT_EQ(report["output"]["channel_layout"], "stereo");
    EXPECT_EQ(test::decode(file("out.wav")).size(), 2U * 48000U);
}

TEST_F(RenderConversion, NamesTheLayoutsThatTheEffectSupports) {
    const auto result = run({makeTones("in.wav", "stereo", 2, 48000), file("out.wav"), "--layout", "22.2"});
    EXPECT_EQ(result.exit_code, 5);
    EXPECT_THAT(result.err, HasSubstr("the normalizer supports mono, stereo, 5.1 or 7.1, not 22.2"));
}

TEST_F(RenderConversion, StrictRefusesWhatItWouldConvert) {
    const std::string in = makeTones("in.wav", "2.1", 3, 96000);
    auto result = run({in, file("out.wav"), "--strict"});
    EXPECT_EQ(result.exit_code, 5);
    EXPECT_THAT(result.err, HasSubstr("the normalizer supports 1, 2, 6 or 8 channels, not 3"));
    result = run({in, file("out.wav"), "--strict", "--layout", "stereo"});
    EXPECT_EQ(result.exit_code, 5);
    EXPECT_THAT(result.err, HasSubstr("the normalizer supports 16000, 44100 or 48000 Hz, not 96000"));
    EXPECT_THAT(folder_.names(), ElementsAre("in.wav"));
    render({in, file("out.wav"), "--strict", "--layout", "stereo", "--rate", "48000"});
    EXPECT_THAT(render({makeTones("fit.wav", "5.1", 6, 44100), file("fit-out.wav"), "--strict"})["notes"],
                IsEmpty());
}

TEST_F(RenderConversion, RefusesWhatItCannotConvert) {
    test::ffmpeg({"-f", "s16le", "-ar", "48000", "-ac", "300", "-i", "/dev/zero", "-t", "0.1", "-c", "copy",
                  file("wide.wav")});
    auto result = run({file("wide.wav"), file("out.wav")});
    EXPECT_EQ(result.exit_code, 5);
    EXPECT_THAT(result.err, HasSubstr("300 channels"));
    const std::string in = makeTones("in.wav", "stereo", 2, 48000);
    EXPECT_EQ(run({in, file("out.wav"), "--rate", "22050"}).exit_code, 5);
    EXPECT_EQ(run({in, file("out.wav"), "--layout", "5.1", "--effect", "dialogue"}).exit_code, 5);
    EXPECT_EQ(run({in, file("out.wav"), "--layout", "nowhere"}).exit_code, 2);
}

}  // namespace
