// Checks when and with which parameters the filter creates effect handles, and how many frames a failing
// engine costs.
#include <gtest/gtest.h>

#include "filter/faults/engine_faults.h"
#include "filter/faults/filter_under_test.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

class FilterDispatch : public ::testing::Test {
  protected:
    FilterDispatch() {
        resetEngineFaults();
        filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
        filter_.setInvalid(false);
    }
    int passThroughLoop(const FrameSpec& spec) {
        std::unique_ptr<Vorlin::IQFFrame> frame = makeFrame(spec, noiseSource(1));
        EXPECT_EQ(filter_.push(frame, 0), 0);
        return (filter_.*Peer::kFilterLoop)();
    }
    bool hasOutput() {
        std::unique_ptr<Vorlin::IQFFrame> out;
        return filter_.pull(out, 0) == 0;
    }

    Vorlin::sonivexFilter filter_{{}, {}, true};  // not initialised: the test runs the worker's loop
    HostLogCapture log_;
};

TEST_F(FilterDispatch, CreatesOneHandlePerStreamAndReleasesItOnFlush) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(passThroughLoop({.channels = 6, .rate_hz = 44100}), 0);
        EXPECT_TRUE(hasOutput());
    }
    EXPECT_EQ(engineFaults().creates, 1);
    EXPECT_EQ(engineFaults().channels_of_calls, std::vector<int>(4, 6));
    EXPECT_EQ(log_.count("48 sonivex creating normalizer handler. channels=6, sampleRate=44100"), 1);
    filter_.flush();
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_EQ(engineFaults().creates, 2);
}

TEST_F(FilterDispatch, DropsExactlyTheFrameWhoseHandleCreationFails) {
    engineFaults().creates_to_fail = 2;
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(passThroughLoop({}), -1);
        EXPECT_FALSE(hasOutput());
    }
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_TRUE(hasOutput());
    EXPECT_EQ(engineFaults().creates, 3);
    EXPECT_EQ(log_.count("24 sonivex createNormalizer failed!"), 2);
}

TEST_F(FilterDispatch, DropsTheFrameOfAFailedCallAndKeepsTheHandle) {
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_TRUE(hasOutput());
    engineFaults().process_result = -5;
    EXPECT_EQ(passThroughLoop({}), -1);
    EXPECT_FALSE(hasOutput());
    engineFaults().process_result = 0;
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_TRUE(hasOutput());
    EXPECT_EQ(engineFaults().creates, 1);
    EXPECT_EQ(log_.count("16 sonivex ProcessNormalizer failed! ret=-5"), 1);
}

TEST_F(FilterDispatch, KeepsTheHandleOfADisabledEffectUntilFlush) {
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_TRUE(hasOutput());
    const void* handle = filter_.*Peer::kNormalizerHandle;
    filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": false})", "");
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_TRUE(hasOutput());
    EXPECT_EQ(filter_.*Peer::kNormalizerHandle, handle);
    filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
    EXPECT_EQ(passThroughLoop({}), 0);
    EXPECT_TRUE(hasOutput());
    EXPECT_EQ(engineFaults().creates, 1);
    filter_.flush();
    EXPECT_EQ(filter_.*Peer::kNormalizerHandle, nullptr);
}

// The effects' functions get the numbers of the stream, whatever the dispatch does to the samples.
TEST_F(FilterDispatch, MakesEachHandleForTheChannelsAndTheRateOfTheStream) {
    const auto select = [this](const char* options) {
        filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, options, "");
    };
    std::vector<NormalizerSettings> normalizers;
    std::vector<SurroundSettings> surrounds;
    for (const int rate_hz : {44100, 48000}) {
        for (const int channels : {1, 2, 6, 8}) {
            SCOPED_TRACE(std::to_string(channels) + " channels, " + std::to_string(rate_hz) + " Hz");
            const FrameSpec spec{.channels = channels, .rate_hz = rate_hz};
            select(R"({"enable_normalizer": true})");
            EXPECT_EQ(passThroughLoop(spec), 0);
            EXPECT_TRUE(hasOutput());
            normalizers.push_back({channels, rate_hz});
            select(R"({"enable_surround": true, "surround_effect_type": "MegaBass", "surround_mode": 3,
                       "surround_limiter": 0})");
            EXPECT_EQ(passThroughLoop(spec), 0);
            EXPECT_TRUE(hasOutput());
            surrounds.push_back({channels, rate_hz, 13, 3, 0});
            filter_.flush();
        }
    }
    EXPECT_EQ(engineFaults().normalizer_settings, normalizers);
    EXPECT_EQ(engineFaults().surround_settings, surrounds);
}

}  // namespace
}  // namespace test
