#include "stated_end.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using sonivex_tool::statedEnd_s;

struct FreeContext {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

class StatedEnd : public testing::Test {
  protected:
    StatedEnd() {
        container_->duration_estimation_method = AVFMT_DURATION_FROM_STREAM;
        container_->duration = AV_NOPTS_VALUE;
        audio_->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
        audio_->time_base = {1, 1000};
        audio_->start_time = AV_NOPTS_VALUE;
        audio_->duration = AV_NOPTS_VALUE;
    }
    void tag(const char* length) { av_dict_set(&audio_->metadata, "DURATION", length, 0); }
    std::optional<double> end_s() const { return statedEnd_s("no such file", *container_, *audio_); }

    std::unique_ptr<AVFormatContext, FreeContext> container_{avformat_alloc_context()};
    AVStream* audio_ = avformat_new_stream(container_.get(), nullptr);
};

TEST_F(StatedEnd, IsThatOfMatroskasTag) {
    tag("00:00:06.021000000");
    EXPECT_NEAR(end_s().value(), 6.021, 1e-9);
    tag("00:02:03.500000000");
    EXPECT_NEAR(end_s().value(), 123.5, 1e-9);
    tag("11:02:03.500000000");
    EXPECT_NEAR(end_s().value(), 11 * 3600 + 2 * 60 + 3.5, 1e-9);
}

TEST_F(StatedEnd, IgnoresATagThatIsNoTime) {
    for (const char* length : {"", "soon", "00:00", "00:00:00.0", "-1:00:05.0", "00:-1:05.0", "00:00:nan"}) {
        tag(length);
        EXPECT_EQ(end_s(), std::nullopt) << length;
    }
}

TEST_F(StatedEnd, FollowsFromTheStartAndTheLengthOfTheStream) {
    audio_->start_time = 500;
    audio_->duration = 62000;
    EXPECT_NEAR(end_s().value(), 62.5, 1e-9);
    tag("00:01:00.000000000");
    EXPECT_NEAR(end_s().value(), 60.0, 1e-9) << "the tag is the earlier time";
}

TEST_F(StatedEnd, IsThatOfTheFileIfTheStreamIsItsOnlyOne) {
    container_->duration = int64_t{7} * AV_TIME_BASE;
    EXPECT_NEAR(end_s().value(), 7.0, 1e-9);
    AVStream* second = avformat_new_stream(container_.get(), nullptr);
    second->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    EXPECT_EQ(end_s(), std::nullopt);
    second->disposition = AV_DISPOSITION_ATTACHED_PIC;
    EXPECT_NEAR(end_s().value(), 7.0, 1e-9) << "a cover has no length";
}

TEST_F(StatedEnd, IsUnknownIfTheLengthIsAGuess) {
    container_->duration = int64_t{7} * AV_TIME_BASE;
    container_->duration_estimation_method = AVFMT_DURATION_FROM_BITRATE;
    EXPECT_EQ(end_s(), std::nullopt);
}

}  // namespace
