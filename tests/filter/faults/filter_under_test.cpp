#include "filter_under_test.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

extern "C" {
#include <libavutil/log.h>
}

namespace test {

using Vorlin::IQFFrame;

FilterUnderTest::FilterUnderTest(Mode mode) : mode_(mode) {
    av_log_set_level(AV_LOG_QUIET);  // these tests make the graphs refuse frames on purpose
    filter_ = std::make_unique<Vorlin::sonivexFilter>(IQFFrame::audioInfo{}, IQFFrame::audioInfo{},
                                                      mode == Mode::kActive);
    EXPECT_TRUE(filter_->init(0));
}

void FilterUnderTest::options(const std::string& json) {
    EXPECT_TRUE(filter_->setOption(Vorlin::filterPrototype::FILTER_OPTION, json, "")) << json;
}

void FilterUnderTest::startNormalizer() {
    options(R"({"enable_normalizer": true})");
    filter_->setInvalid(false);
}

std::unique_ptr<IQFFrame> FilterUnderTest::pass(std::unique_ptr<IQFFrame> frame) {
    EXPECT_EQ(filter_->push(frame, 0), 0);
    return pullPatiently();
}

std::unique_ptr<IQFFrame> FilterUnderTest::pullPatiently(int patience_ms) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(patience_ms);
    std::unique_ptr<IQFFrame> frame;
    while (filter_->pull(frame, 0) != 0) {
        if (mode_ == Mode::kInactive || Clock::now() > deadline) return nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return frame;
}

void FilterUnderTest::pushPatiently(std::unique_ptr<IQFFrame> frame,
                                    std::vector<std::unique_ptr<IQFFrame>>& out) {
    // A dump is synced at every call, which takes seconds on a busy disk.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < deadline) {
        if (filter_->push(frame, 0) == 0) return;
        std::unique_ptr<IQFFrame> finished;
        if (filter_->pull(finished, 0) == 0) {
            out.push_back(std::move(finished));
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    FAIL() << "the filter accepted no frame for a minute";
}

}  // namespace test
