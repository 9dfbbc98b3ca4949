// Conversion graphs that fail once: at most one frame is lost or delivered as 16-bit, and no flush is needed.
#include <gtest/gtest.h>

#include "filter_under_test.h"
#include "frame_checks.h"
#include "graph_faults.h"
#include "support/direct_normalizer.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

const std::vector<AVSampleFormat> kNotSixteenBit = {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_S32};

void expectFrame(const std::unique_ptr<IQFFrame>& out, AVSampleFormat format,
                 const std::vector<int16_t>& expected) {
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(avFrameOf(out)->format, format);
    EXPECT_EQ(out->getInfo().format, format);
    ASSERT_TRUE(frameMatchesDescription(out->getInfo(), avFrameOf(out)))
        << "every plane lies in a buffer that holds it";
    EXPECT_EQ(samplesOf(avFrameOf(out)), expected);
}

TEST(OutputGraphFaults, AGraphThatIgnoresThePlayersFormatDeliversSixteenBitOnce) {
    for (const AVSampleFormat format : kNotSixteenBit) {
        SCOPED_TRACE(av_get_sample_fmt_name(format));
        LogCapture log;
        FilterUnderTest filter;
        filter.startNormalizer();
        DirectNormalizer engine(2);
        WithGraphFaults faults;
        faults->outputFormatsToLose = 1;
        for (const AVSampleFormat delivered : {AV_SAMPLE_FMT_S16, format, format}) {
            auto frame = makeFrame({.format = format}, noise(4, 3000));
            const auto expected = engine.process(samplesOf(*frame));
            expectFrame(filter.pass(std::move(frame)), delivered, expected);
        }
        EXPECT_EQ(log.count("24 sonivex: output format conversion failed (ret=-22), fallback to S16"), 1);
    }
}

}  // namespace
}  // namespace test
