#include "render_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

RenderReport example() {
    RenderReport report;
    report.input = {"in.wav", "wav", "pcm_f32le", test::floatSpec(2), 96000, {-40.0, -20.5}};
    report.output = {"out.wav", "wav", "pcm_f32le", test::floatSpec(2), 96000, {-21.25, -1.0}};
    report.effect = "normalizer";
    report.elapsed_seconds = 0.02;
    report.pushed = 94;
    return report;
}

TEST(RenderReport, TextShowsLevelsBeforeAndAfter) {
    const std::string text = asText(example());
    EXPECT_THAT(text, HasSubstr("in.wav (pcm_f32le, 48000 Hz, stereo)"));
    EXPECT_THAT(text, HasSubstr("2.000 s, rendered 100 times faster than real time"));
    EXPECT_THAT(text, HasSubstr("-40.0 LUFS -> -21.2 LUFS  (+18.8 dB)"));
    EXPECT_THAT(text, HasSubstr("-20.5 dBFS -> -1.0 dBFS  (+19.5 dB)"));
    EXPECT_THAT(text, HasSubstr("94 of the filter, 0 dropped, 0 bypassed"));
}

TEST(RenderReport, JsonContainsTheSameFigures) {
    const std::string text = asJson(example());
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
    const auto json = nlohmann::json::parse(text);
    EXPECT_EQ(json["length_seconds"], 2.0);
    EXPECT_NEAR(json["times_real_time"].get<double>(), 100.0, 1e-9);
    EXPECT_EQ(json["input"]["integrated_lufs"], -40.0);
    EXPECT_EQ(json["output"]["sample_peak_dbfs"], -1.0);
    EXPECT_EQ(json["output"]["channels"], 2);
    EXPECT_EQ(json["frames_pushed"], 94);
    EXPECT_EQ(json["frames_filled_with_silence"], 0);
}

// No two figures are alike, so none can stand in another's place.
TEST(RenderReport, PutsEachCountInItsPlace) {
    RenderReport report = example();
    report.dropped = 2;
    report.bypassed = 5;
    report.silent_fill_frames = 2048;
    report.flushes = 3;
    report.delay_frames = 256;
    report.input.frames = 95999;
    report.samples.above_full_scale = 11;
    report.samples.not_finite = 12;
    report.timeline = {
        .lead_in_s = 0.5, .gaps = 21, .filled_s = 22.5, .overlaps = 23, .cut_s = 24.5, .jumps = 25};
    report.damage.read_errors = 31;
    report.damage.corrupt_packets = 32;
    report.damage.decode_errors = 33;
    report.source.stream_number = 1;
    report.source.audio_streams = 4;
    EXPECT_THAT(asText(report), HasSubstr("94 of the filter, 2 dropped, 5 bypassed"));
    EXPECT_THAT(asText(report), HasSubstr("256 frames, removed"));
    EXPECT_THAT(asText(report), HasSubstr("2 of 4"));
    const auto json = nlohmann::json::parse(asJson(report));
    EXPECT_EQ(json["frames_pushed"], 94);
    EXPECT_EQ(json["frames_dropped"], 2);
    EXPECT_EQ(json["frames_bypassed"], 5);
    EXPECT_EQ(json["frames_filled_with_silence"], 2048);
    EXPECT_EQ(json["flushes"], 3);
    EXPECT_EQ(json["delay_frames"], 256);
    EXPECT_EQ(json["input"]["frames"], 95999);
    EXPECT_EQ(json["output"]["frames"], 96000);
    EXPECT_EQ(json["input"]["stream"], 1);
    EXPECT_EQ(json["input"]["audio_streams"], 4);
    EXPECT_EQ(json["samples_above_full_scale"], 11);
    EXPECT_EQ(json["samples_not_finite"], 12);
    EXPECT_EQ(json["timeline"]["lead_in_seconds"], 0.5);
    EXPECT_EQ(json["timeline"]["gaps"], 21);
    EXPECT_EQ(json["timeline"]["filled_seconds"], 22.5);
    EXPECT_EQ(json["timeline"]["overlaps"], 23);
    EXPECT_EQ(json["timeline"]["cut_seconds"], 24.5);
    EXPECT_EQ(json["timeline"]["jumps"], 25);
    EXPECT_EQ(json["damage"]["read_errors"], 31);
    EXPECT_EQ(json["damage"]["corrupt_packets"], 32);
    EXPECT_EQ(json["damage"]["decode_errors"], 33);
    EXPECT_EQ(json["decode_errors"], 33);
    EXPECT_EQ(json["damage"]["is_damaged"], true);
}

TEST(RenderReport, RemarksOnProblemsOnly) {
    RenderReport report = example();
    EXPECT_THAT(remarks(report), IsEmpty());
    report.bypassed = report.pushed;  // bypassed from the start, which has a note of its own
    EXPECT_THAT(remarks(report), IsEmpty());
    report.dropped = 2;
    report.silent_fill_frames = 2048;
    report.bypassed = 5;
    EXPECT_THAT(remarks(report),
                ElementsAre("the filter dropped 2 calls; 2048 frames of silence replace them",
                            "the filter took too long and passed 5 calls through untouched"));
}

TEST(RenderReport, WarnsThatBypassedCallsAreEarly) {
    RenderReport report = example();
    report.bypassed = 5;
    report.delay_frames = 256;
    EXPECT_THAT(remarks(report),
                ElementsAre(HasSubstr("5 calls through untouched; they are 256 frames early")));
}

TEST(RenderReport, RemarksOnMissingAndIncompleteDumps) {
    RenderReport report = example();
    report.dump_folder = "dumps";
    report.dump_bytes_missing = 4096;
    EXPECT_THAT(remarks(report), ElementsAre(HasSubstr("dumps: nothing was dumped")));
    report.dumps = {"sonivex_normalizer_input_12345678.pcm"};
    EXPECT_THAT(remarks(report), ElementsAre(HasSubstr("incomplete, 4096 bytes are missing")));
    report.dump_bytes_missing = 0;
    EXPECT_THAT(remarks(report), IsEmpty());
}

TEST(RenderReport, ShowsNoFiguresForSilence) {
    RenderReport report = example();
    report.input.loudness = {};
    report.output.loudness = {};
    EXPECT_THAT(asText(report), HasSubstr("silence -> silence\n"));
    const auto json = nlohmann::json::parse(asJson(report));
    EXPECT_TRUE(json["input"]["integrated_lufs"].is_null());
    EXPECT_TRUE(json["output"]["sample_peak_dbfs"].is_null());
}

TEST(RenderReport, JsonIsValidIfAFileNameIsNotUtf8) {
    RenderReport report = example();
    report.input.path = "caf\xe9.wav";
    EXPECT_TRUE(nlohmann::json::accept(asJson(report)));
}

}  // namespace
