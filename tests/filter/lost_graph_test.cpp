// Checks what the filter does with a conversion graph after one of libavfilter's calls has failed once: it
// frees the graph, so that no sample left inside comes out later, and the next frame makes another one.
#include <gtest/gtest.h>

#include <cerrno>

#include "filter/faults/filter_under_test.h"
#include "filter/faults/graph_faults.h"
#include "filter/faults/system_faults.h"
#include "support/effects/normalizer_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

// A stream of floats, whose frames differ in length: a sample left inside a graph would shift all later ones.
class FilterLostGraph : public ::testing::Test {
  protected:
    FilterLostGraph() { filter_.startNormalizer(); }

    std::unique_ptr<IQFFrame> pass(int frames, std::vector<int16_t>& in) {
        auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP, .frames = frames},
                               noiseSource(static_cast<uint32_t>(frames), 3000));
        in = samplesOf(*frame);
        return filter_.pass(std::move(frame));
    }
    // Passes a frame that comes out, in `format`, with the samples of the effect.
    void expectPasses(int frames, AVSampleFormat format = AV_SAMPLE_FMT_FLTP) {
        SCOPED_TRACE(frames);
        std::vector<int16_t> in;
        const auto out = pass(frames, in);
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(avFrameOf(out)->format, format);
        EXPECT_EQ(out->getInfo().format, format);
        EXPECT_EQ(avFrameOf(out)->nb_samples, frames);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), engine_.process(in)));
    }
    void expectLost(int frames) {
        std::vector<int16_t> in;
        EXPECT_EQ(pass(frames, in), nullptr);
    }
    void expectNoInputGraph() {
        EXPECT_EQ(filter_.field(Peer::kFilterGraph), nullptr);
        EXPECT_EQ(filter_.field(Peer::kInputSource), nullptr);
        EXPECT_EQ(filter_.field(Peer::kInputSink), nullptr);
    }
    void expectNoOutputGraph() {
        EXPECT_EQ(filter_.field(Peer::kOutFilterGraph), nullptr);
        EXPECT_EQ(filter_.field(Peer::kOutputSource), nullptr);
        EXPECT_EQ(filter_.field(Peer::kOutputSink), nullptr);
    }

    FilterUnderTest filter_;
    NormalizerEffect engine_{2};
    WithGraphFaults faults_;
    HostLogCapture log_;
};

TEST_F(FilterLostGraph, CostsTheFrameWhoseInputGraphCannotBeConfigured) {
    faults_->input_configs_to_fail = 1;
    faults_->error = AVERROR(ENOMEM);
    expectLost(600);
    expectNoInputGraph();
    EXPECT_EQ(log_.count("16 Failed to configure filter graph: -12"), 1);
    EXPECT_EQ(log_.count("16 init AVFilter error -12"), 1);
    for (const int frames : {100, 300, 1024}) expectPasses(frames);
}

TEST_F(FilterLostGraph, CostsTheFrameThatTheInputGraphDoesNotGiveBack) {
    for (const int error : {AVERROR(EAGAIN), AVERROR_EOF, AVERROR(EIO)}) {
        SCOPED_TRACE(error);
        expectPasses(512);
        faults_->input_reads_to_fail = 1;
        faults_->error = error;
        expectLost(600);
        expectNoInputGraph();
        for (const int frames : {100, 300, 1024}) expectPasses(frames);
    }
}

TEST_F(FilterLostGraph, CostsTheFrameThatTheInputGraphRefuses) {
    expectPasses(512);
    faults_->input_pushes_to_fail = 1;
    faults_->error = AVERROR(EINVAL);
    expectLost(600);
    EXPECT_EQ(log_.count("16 av_buffersrc_add_frame error -22"), 1);
    for (const int frames : {100, 300, 1024}) expectPasses(frames);
}

TEST_F(FilterLostGraph, CostsNoFrameWhoseOutputGraphCannotBeConfigured) {
    faults_->output_configs_to_fail = 1;
    faults_->error = AVERROR(ENOMEM);
    expectPasses(600, AV_SAMPLE_FMT_S16);
    expectNoOutputGraph();
    constexpr char kMade[] =
        "32 sonivex: output filter graph initialized. S16 -> fltp, channels=2, sample_rate=48000";
    EXPECT_EQ(log_.count(kMade), 0);
    for (const int frames : {100, 300, 1024}) expectPasses(frames);
    EXPECT_EQ(log_.count(kMade), 1);
}

TEST_F(FilterLostGraph, CostsNoFrameThatTheOutputGraphDoesNotGiveBack) {
    for (const int error : {AVERROR(EAGAIN), AVERROR_EOF, AVERROR(EIO)}) {
        SCOPED_TRACE(error);
        expectPasses(512);
        faults_->output_reads_to_fail = 1;
        faults_->error = error;
        expectPasses(600, AV_SAMPLE_FMT_S16);
        expectNoOutputGraph();
        EXPECT_EQ(log_.count("24 sonivex: output format conversion failed (ret=" + std::to_string(error) +
                             "), fallback to S16"),
                  1);
        for (const int frames : {100, 300, 1024}) expectPasses(frames);
    }
}

TEST_F(FilterLostGraph, CostsNoFrameThatTheOutputGraphRefuses) {
    expectPasses(512);
    faults_->output_pushes_to_fail = 1;
    faults_->error = AVERROR(EINVAL);
    expectPasses(600, AV_SAMPLE_FMT_S16);
    expectNoOutputGraph();
    for (const int frames : {100, 300, 1024}) expectPasses(frames);
}

// An active filter whose loop the test runs. A frame that the graph may still give is no error of the loop.
TEST(FilterLoopResult, IsTheErrorOfTheInputGraphUnlessItMayGiveTheFrameLater) {
    const struct {
        int GraphFaults::*call;
        int error;
        int result;
        int64_t rest_ms;
    } faults[] = {
        {&GraphFaults::input_reads_to_fail, AVERROR(EAGAIN), 0, 10},
        {&GraphFaults::input_reads_to_fail, AVERROR_EOF, 0, 10},
        {&GraphFaults::input_reads_to_fail, AVERROR(EIO), AVERROR(EIO), 0},
        {&GraphFaults::input_pushes_to_fail, AVERROR(EINVAL), AVERROR(EINVAL), 0},
        {&GraphFaults::input_configs_to_fail, AVERROR(ENOMEM), AVERROR(ENOMEM), 0},
    };
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.error);
        Vorlin::sonivexFilter filter({}, {}, true);
        filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
        filter.setInvalid(false);
        std::unique_ptr<IQFFrame> frame = makeFrame({}, noiseSource(1));
        ASSERT_EQ(filter.push(frame, 0), 0);
        WithGraphFaults graph;
        (*graph).*fault.call = 1;
        graph->error = fault.error;
        WithSystemFaults system;
        EXPECT_EQ((filter.*Peer::kFilterLoop)(), fault.result);
        EXPECT_EQ(system->slept_ms, fault.rest_ms);
        EXPECT_EQ(filter.pull(frame, 0), Vorlin::kTryAgain);
    }
}

}  // namespace
}  // namespace test
