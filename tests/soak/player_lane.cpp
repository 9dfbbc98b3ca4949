#include <algorithm>
#include <cstdint>
#include <utility>

#include "random_host/promise.h"
#include "random_host/random_frames.h"
#include "random_host/random_options.h"
#include "soak/lanes.h"
#include "vorlin/player.h"

namespace test {

namespace {

class PlayerLane final : public Lane {
  public:
    explicit PlayerLane(std::uint64_t seed) : bytes_(seed) {
        player_ = Vorlin::Player::create(
            nullptr, {.active = false, .time_base = {1, kTicks_hz}},
            [this](std::unique_ptr<Vorlin::IQFFrame> frame) { receive(std::move(frame)); });
        promise(player_ != nullptr, "a player can be made");
    }

    void play(double audio_s) override {
        target_s_ += audio_s;
        while (audio_s_ < target_s_) step();
        drain();
        player_->seek();
        in_frames_ = out_frames_ = 0;
        const Vorlin::PlayerCounts& counts = player_->counts();
        promise(counts.pushed == counts.pulled + counts.dropped + counts.discarded,
                "every call of the filter is accounted for");
    }

    HostCounts counts() const override {
        const Vorlin::PlayerCounts& counts = player_->counts();
        return {.pushed = counts.pushed,
                .pulled = counts.pulled,
                .given_up = counts.dropped,
                .thrown_away = counts.discarded,
                .flushes = counts.flushes,
                .filters = 1,
                .streams = streams_,
                .audio_s = audio_s_};
    }

    // The counts are those of the filter's calls. This is about the frames of the player.
    double processedPart() const override {
        return pulled_ == 0 ? 0 : static_cast<double>(processed_) / static_cast<double>(pulled_);
    }

  private:
    static constexpr int kTicks_hz = 1'000'000;
    static constexpr int kLongest_frames = 4096;
    static constexpr int kMarked_frames = 16;

    void step() {
        switch (bytes_.below(256)) {
            case 0:
                sound_ = {.format = static_cast<AVSampleFormat>(bytes_.below(AV_SAMPLE_FMT_NB)),
                          .channels = bytes_.of({1, 2, 2, 2, 6, 8, 3}),
                          .rate_hz = bytes_.of({48000, 48000, 44100, 16000, 96000})};
                ++streams_;
                break;
            case 1:
            case 2:
                promise(player_->setOptions(effectOption(bytes_)), "a JSON object is understood");
                break;
            case 3:
                player_->setBypass(bytes_.oneIn(2));
                break;
            case 4:
                player_->setBypass(false);
                player_->retryAfterOverload();
                break;
            case 5:
                player_->setVideoFps(bytes_.of({25.0, 30.0, 60.0, 0.0}));
                break;
            case 6:
                player_->setSpeed(bytes_.of({1.0, 1.0, 1.0, 2.0}));
                break;
            case 7:
                drain();
                break;
            case 8:
                player_->seek();
                in_frames_ = out_frames_ = 0;
                time_us_ = std::int64_t{bytes_.word()};
                break;
            case 9:
                time_us_ += std::int64_t{1000} * static_cast<int>(bytes_.byte());  // a gap
                break;
            default:
                push();
                break;
        }
    }

    void push() {
        RandomFrame made = makeHonestFrame(sound_, kLongest_frames, bytes_);
        if (!made.note.is_honest) return;
        AVFrame* samples = static_cast<TrackedFrame&>(*made.frame);
        samples->pts = time_us_;
        samples->time_base = {1, kTicks_hz};
        samples->opaque = markOf(*samples);
        in_frames_ += samples->nb_samples;
        audio_s_ += static_cast<double>(samples->nb_samples) / sound_.rate_hz;
        time_us_ += std::int64_t{kTicks_hz} * samples->nb_samples / sound_.rate_hz;
        promise(player_->push(std::move(made.frame)) == 0, "a player takes every frame");
    }

    // Sums up samples in the middle of the first channel, or of all channels side by side. Never null.
    static void* markOf(const AVFrame& samples) {
        const auto format = static_cast<AVSampleFormat>(samples.format);
        const int channels = av_sample_fmt_is_planar(format) != 0 ? 1 : samples.ch_layout.nb_channels;
        const int bytes_per_instant = av_get_bytes_per_sample(format) * channels;
        const int bytes =
            bytes_per_instant * std::min(samples.nb_samples - samples.nb_samples / 2, kMarked_frames);
        const std::uint8_t* const middle = samples.data[0] + samples.nb_samples / 2 * bytes_per_instant;
        std::uintptr_t sum = 1;
        for (int i = 0; i < bytes; ++i) sum = sum * 31 + middle[i];
        return reinterpret_cast<void*>(sum | 1U);
    }

    // The frames of a tail are the player's own: nobody has marked them. A frame with other samples than it
    // had was processed.
    void receive(std::unique_ptr<Vorlin::IQFFrame> frame) {
        auto* holder = dynamic_cast<Vorlin::AVQFFrame*>(frame.get());
        promise(holder != nullptr, "a frame with samples comes out with samples");
        const AVFrame* samples = *holder;
        if (samples->opaque == nullptr) return;
        out_frames_ += samples->nb_samples;
        ++pulled_;
        if (samples->opaque != markOf(*samples)) ++processed_;
    }

    void drain() {
        promise(player_->drain() == 0, "a player lets everything out at the end of a stream");
        promise(player_->counts().dropped == 0, "no call is lost");
        promise(in_frames_ == out_frames_, "all audio comes out, and nothing twice");
    }

    SeededBytes bytes_;
    Sound sound_;
    std::int64_t time_us_ = 0;
    std::int64_t in_frames_ = 0;   // instants of audio since the last seek
    std::int64_t out_frames_ = 0;  // of them
    double audio_s_ = 0;
    double target_s_ = 0;
    std::uint64_t streams_ = 0;
    std::uint64_t pulled_ = 0;                // frames of the player's stream that came out
    std::uint64_t processed_ = 0;             // of them
    std::unique_ptr<Vorlin::Player> player_;  // the last member: it sends frames while it lives
};

}  // namespace

std::unique_ptr<Lane> makePlayerLane(std::uint64_t seed) {
    return std::make_unique<PlayerLane>(seed);
}

}  // namespace test
