#include "host/streams/player_run.h"

#include <algorithm>

#include "frame_checks.h"
#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"
#include "vorlin/av_compat.h"

extern "C" {
#include <libavutil/dict.h>
}

namespace test {

namespace {

constexpr int kCall_frames = 1024;
constexpr int kLatestSurround_frames = 1024;
constexpr int kLatestDialogue_frames = 1536;

}  // namespace

PlayerRun::PlayerRun(const Vorlin::PlayerConfig& config, const std::string& options) {
    player_ = Vorlin::Player::create(nullptr, config, [this](std::unique_ptr<Vorlin::IQFFrame> frame) {
        const AVFrame* samples = avFrameOf(frame);
        ASSERT_NE(samples, nullptr);
        const Vorlin::IQFFrame::audioInfo& info = frame->getInfo();
        const bool is_described = info.nb_samples == samples->nb_samples && info.format == samples->format &&
                                  info.channels == samples->ch_layout.nb_channels &&
                                  info.channel_layout == Vorlin::av::layoutMask(samples->ch_layout) &&
                                  (info.nb_samples == 0 || Vorlin::frameMatchesDescription(info, samples));
        const AVFrameSideData* gain = av_frame_get_side_data(samples, AV_FRAME_DATA_REPLAYGAIN);
        std::vector<uint8_t> side_data;
        if (gain != nullptr) side_data.assign(gain->data, gain->data + gain->size);
        const AVDictionaryEntry* mark = av_dict_get(samples->metadata, "mark", nullptr, 0);
        played_.push_back({frame.get(), samples->pts, Vorlin::av::frameDuration(samples), samples->format,
                           samples->ch_layout.nb_channels, samples->nb_samples, is_described,
                           mark != nullptr ? mark->value : "", samples->opaque, side_data,
                           samplesOf(samples)});
    });
    EXPECT_TRUE(player_->setOptions(options));
}

const Vorlin::IQFFrame* PlayerRun::push(const Pcm& all, const FrameSpec& spec, int64_t pts,
                                        const std::string& mark, AVRational time_base) {
    const int64_t first = next_;
    auto frame = makeFrame(spec, [&](int index, int channel) {
        return all.at(static_cast<std::size_t>((first + index) * spec.channels + channel));
    });
    next_ += spec.frames;
    AVFrame* samples = *frame;
    samples->pts = pts;
    samples->time_base = time_base;
    Vorlin::av::setFrameDuration(samples, spec.frames);
    if (!mark.empty()) av_dict_set(&samples->metadata, "mark", mark.c_str(), 0);
    const Vorlin::IQFFrame* object = frame.get();
    EXPECT_EQ(player_->push(std::move(frame)), 0);
    return object;
}

Pcm PlayerRun::sound(std::size_t first) const {
    Pcm all;
    for (std::size_t i = first; i < played_.size(); ++i) append(all, played_[i].samples);
    return all;
}

Pcm cut(const Pcm& pcm, int channels, int64_t first, int64_t frames) {
    Pcm part(static_cast<std::size_t>(frames * channels));
    const auto size = static_cast<int64_t>(pcm.size());
    for (int64_t i = 0; i < frames * channels; ++i) {
        const int64_t at = first * channels + i;
        if (at < size) part[static_cast<std::size_t>(i)] = pcm[static_cast<std::size_t>(at)];
    }
    return part;
}

void pushFrames(PlayerRun& run, const Pcm& in, int count, FrameSpec spec) {
    spec.frames = kStreamFrame;
    for (int i = 0; i < count; ++i) run.push(in, spec, run.position());
}

Pcm effectAlone(const std::string& options, const Pcm& in, int channels, int64_t frames, int rate_hz) {
    const bool is_surround = options == kSurround;
    const int64_t delay = is_surround            ? kLatestSurround_frames
                          : options == kDialogue ? kLatestDialogue_frames
                                                 : 0;
    const int64_t calls = (frames + delay + kCall_frames - 1) / kCall_frames;
    const Pcm padded = cut(in, channels, 0, calls * kCall_frames);
    if (is_surround) {
        SurroundEffect effect(channels, 1, 1, 1, rate_hz);
        const Pcm out = effect.processInCallsOf(kCall_frames, surroundInput(padded, channels));
        return cut(out, 2, delay, frames);
    }
    if (options == kDialogue) {
        DialogueEffect effect({.rate_hz = rate_hz});
        return cut(effect.processInCallsOf(kCall_frames, padded), channels, delay, frames);
    }
    NormalizerEffect effect(channels, rate_hz);
    return cut(effect.processInCallsOf(kCall_frames, padded), channels, delay, frames);
}

}  // namespace test
