#include "filter_under_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>

extern "C" {
#include <libavutil/log.h>
}

#include "vorlin/log.h"

namespace test {

using Vorlin::IQFFrame;

FilterUnderTest::FilterUnderTest(Mode mode) : mMode(mode) {
    av_log_set_level(AV_LOG_QUIET);  // what the graphs refuse is refused on purpose here
    mFilter = std::make_unique<Vorlin::sonivexFilter>(IQFFrame::audioInfo{}, IQFFrame::audioInfo{},
                                                      mode == Mode::Active);
    EXPECT_TRUE(mFilter->init(0));
}

void FilterUnderTest::options(const std::string& json) {
    EXPECT_TRUE(mFilter->setOption(Vorlin::filterPrototype::FILTER_OPTION, json, "")) << json;
}

void FilterUnderTest::startNormalizer() {
    options(R"({"enable_normalizer": true})");
    mFilter->setInvalid(false);
}

std::unique_ptr<IQFFrame> FilterUnderTest::pass(std::unique_ptr<IQFFrame> frame) {
    EXPECT_EQ(mFilter->push(frame, 0), 0);
    return pullPatiently();
}

std::unique_ptr<IQFFrame> FilterUnderTest::pullPatiently(int patience_ms) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(patience_ms);
    std::unique_ptr<IQFFrame> frame;
    while (mFilter->pull(frame, 0) != 0) {
        if (mMode == Mode::Inactive || Clock::now() > deadline) return nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return frame;
}

void FilterUnderTest::pushPatiently(std::unique_ptr<IQFFrame> frame,
                                    std::vector<std::unique_ptr<IQFFrame>>& out) {
    for (int attempt = 0; attempt < 5000; ++attempt) {
        if (mFilter->push(frame, 0) == 0) return;
        std::unique_ptr<IQFFrame> finished;
        if (mFilter->pull(finished, 0) == 0) {
            out.push_back(std::move(finished));
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    FAIL() << "the filter takes no frame";
}

struct LogCapture::Lines {
    std::mutex mutex;
    std::vector<std::string> lines;
};

LogCapture::LogCapture() : mLines(std::make_shared<Lines>()) {
    Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    Vorlin::setLogSink([lines = mLines](int level, const std::string&, const std::string& message) {
        const std::lock_guard lock(lines->mutex);
        lines->lines.push_back(std::to_string(level) + " " + message);
    });
}

LogCapture::~LogCapture() {
    Vorlin::setLogLevel(Vorlin::LOG_QUIET);
    Vorlin::setLogSink({});
}

std::vector<std::string> LogCapture::lines() const {
    const std::lock_guard lock(mLines->mutex);
    return mLines->lines;
}

int LogCapture::count(const std::string& line) const {
    const std::lock_guard lock(mLines->mutex);
    return static_cast<int>(std::count(mLines->lines.begin(), mLines->lines.end(), line));
}

}  // namespace test
