// Renders a file through the steered filter, which drops some calls, becomes too slow for the rest and writes
// short dumps, so that every count of the report differs from the others and from zero.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

#include "console.h"
#include "end_to_end/media/media.h"
#include "failure.h"
#include "plugin_search.h"
#include "render.h"
#include "support/processes/temporary_folder.h"
#include "tools/sonivex/steered_filter/steering.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kCall_frames = 1024;
constexpr int kCalls = 47;
constexpr int kBytesPerFrame = 4;  // stereo, 16 bits

class RenderCounts : public testing::Test {
  protected:
    // Makes a stereo file of whole calls, in which some calls begin with a sample that steers the filter.
    std::string input(const std::map<int, int16_t>& steering) const {
        std::vector<int16_t> samples(2 * kCalls * kCall_frames, 5);
        for (const auto& [call, sample] : steering) samples.at(2 * size_t(call) * kCall_frames) = sample;
        test::writeFile(folder_.file("in.pcm"), std::string(reinterpret_cast<const char*>(samples.data()),
                                                            samples.size() * sizeof(int16_t)));
        test::ffmpeg({"-f", "s16le", "-ar", "48000", "-ac", "2", "-i", folder_.file("in.pcm"),
                      folder_.file("in.wav")});
        return folder_.file("in.wav");
    }

    RenderReport renderReport(const std::string& path, double flush_at_s = 0.1) const {
        RenderSettings settings;
        settings.input.path = path;
        settings.output.path = folder_.file("out.wav");
        settings.filter.chain = {findEffect("normalizer")};
        settings.filter.video_fps = 25.0;
        settings.filter.options.dump = true;
        settings.filter.dump_folder = dumps_.path();
        settings.filter.flush_at_s = {flush_at_s};
        settings.level.measure = false;
        Console console(true);
        return render(settings, loadPlugin(SONIVEX_STEERED_FILTER), console);
    }

    // Returns the first sample of each call of the output, in 16 bits.
    std::vector<int> outputOfEachCall() const {
        std::vector<int> firsts;
        const std::vector<float> samples = test::decode(folder_.file("out.wav"));
        for (size_t i = 0; i < samples.size(); i += 2 * kCall_frames)
            firsts.push_back(static_cast<int>(std::lround(samples[i] * 32768.0F)));
        return firsts;
    }

    test::TemporaryFolder folder_;
    test::TemporaryFolder dumps_;
};

TEST_F(RenderCounts, ReachTheReportEachInItsPlace) {
    const RenderReport report = renderReport(input({{7, test::kDropCall},
                                                    {8, test::kDropCall},
                                                    {20, test::kDropCall},
                                                    {10, test::kShortDump},
                                                    {12, test::kShortDump},
                                                    {29, test::kOverload}}));
    constexpr int kBypassed = kCalls - 30;
    EXPECT_EQ(report.pushed, static_cast<uint64_t>(kCalls));
    EXPECT_EQ(report.dropped, 3U);
    EXPECT_EQ(report.bypassed, static_cast<uint64_t>(kBypassed));
    EXPECT_EQ(report.silent_fill_frames, 3 * kCall_frames);
    EXPECT_EQ(report.flushes, 1U);
    EXPECT_EQ(report.input.frames, kCalls * kCall_frames);
    EXPECT_EQ(report.output.frames, kCalls * kCall_frames);
    EXPECT_EQ(report.dump_bytes_missing, 2U * (test::kMissingInput_bytes + test::kMissingOutput_bytes));
    EXPECT_THAT(report.notes, ElementsAre("the filter dropped 3 calls; 3072 frames of silence replace them",
                                          "the filter took too long and passed 17 calls through untouched",
                                          HasSubstr(": the dump is incomplete, 800 bytes are missing")));
    EXPECT_THAT(asText(report), HasSubstr("47 of the filter, 3 dropped, 17 bypassed"));
    const auto json = nlohmann::json::parse(asJson(report));
    EXPECT_EQ(json["frames_pushed"], 47);
    EXPECT_EQ(json["frames_dropped"], 3);
    EXPECT_EQ(json["frames_bypassed"], 17);
    EXPECT_EQ(json["frames_filled_with_silence"], 3072);
    EXPECT_EQ(json["flushes"], 1);
    EXPECT_EQ(json["dump_files"].size(), 2U);
    EXPECT_EQ(json["notes"].size(), 3U);

    const uintmax_t dumped = static_cast<uintmax_t>(kCalls - 3 - kBypassed) * kCall_frames * kBytesPerFrame;
    EXPECT_EQ(test::readFile(dumps_.file("sonivex_normalizer_input_12345678.pcm")).size(),
              dumped - 2 * test::kMissingInput_bytes);
    EXPECT_EQ(test::readFile(dumps_.file("sonivex_normalizer_output_12345678.pcm")).size(),
              dumped - 2 * test::kMissingOutput_bytes);
}

TEST_F(RenderCounts, MatchTheSoundOfTheOutput) {
    renderReport(input({{7, test::kDropCall}, {29, test::kOverload}}));
    std::vector<int> expected;
    for (int call = 0; call < kCalls; ++call) {
        constexpr int kFlushedCall = 4;  // 0.1 s is frame 4800
        expected.push_back(call < kFlushedCall ? call + 1 : call - kFlushedCall + 1);
        if (call == 7) expected.back() = 0;
        if (call >= 30) expected.back() = 5;
    }
    EXPECT_EQ(outputOfEachCall(), expected);
}

// The second part has another format, and so a chain of its own. A flush is a time of the whole file.
TEST_F(RenderCounts, IncludeAFlushAfterAChangeOfTheChannels) {
    std::string both;
    for (const char* layout : {"stereo", "5.1"}) {
        test::ffmpeg({"-f", "lavfi", "-i", std::string("anullsrc=r=48000:cl=") + layout, "-t", "1", "-b:a",
                      "448k", folder_.file("part.ac3")});
        both += test::readFile(folder_.file("part.ac3"));
    }
    test::writeFile(folder_.file("in.ac3"), both);
    const RenderReport report = renderReport(folder_.file("in.ac3"), 1.5);
    constexpr int kPart_frames = 32 * 1536;  // 1 s in frames of AC-3
    ASSERT_EQ(report.input.frames, 2 * kPart_frames);
    EXPECT_EQ(report.flushes, 1U);
    std::vector<int> expected;
    for (int call = 0; call < kPart_frames / kCall_frames; ++call) expected.push_back(call + 1);
    constexpr int kFlushedCall = (72000 - kPart_frames) / kCall_frames;
    for (int call = 0; call < kPart_frames / kCall_frames; ++call)
        expected.push_back(call < kFlushedCall ? call + 1 : call - kFlushedCall + 1);
    EXPECT_EQ(outputOfEachCall(), expected);
}

TEST_F(RenderCounts, OfACompleteDumpCauseNoNote) {
    const RenderReport report = renderReport(input({{7, test::kDropCall}}));
    EXPECT_EQ(report.dump_bytes_missing, 0U);
    EXPECT_THAT(report.notes, ElementsAre("the filter dropped 1 calls; 1024 frames of silence replace them"));
}

TEST_F(RenderCounts, ThatAreZeroForEveryCallFail) {
    std::map<int, int16_t> every_call;
    for (int call = 0; call < kCalls; ++call) every_call[call] = test::kDropCall;
    try {
        (void)renderReport(input(every_call));
        ADD_FAILURE() << "the filter gave nothing back, and nobody missed it";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::FilterFailed);
        EXPECT_STREQ(failure.what(), "the filter dropped every frame (--verbose shows its log)");
    }
}

}  // namespace
