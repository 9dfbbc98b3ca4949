#include "effect_path.h"

#include <algorithm>
#include <ctime>
#include <functional>
#include <utility>

#include "failure.h"

namespace sonivex_tool {
namespace {

// Every push multiplies what was counted before, so that about a second counts.
constexpr double kCpuMemory = 0.98;
constexpr int kMeasuredPiece_frames = 1024;

AudioSpec stereoSpec(int rate_hz) {
    return {.format = AV_SAMPLE_FMT_FLT, .rate_hz = rate_hz, .layout = defaultLayout(2)};
}

double threadTime_s() {
    timespec time{};
    (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

int64_t positionOfNext(const Programme& programme) {
    return programme.oldest() < programme.next() ? programme.frame(programme.oldest()).position
                                                 : programme.end();
}

}  // namespace

EffectPath::EffectPath(const EffectChoice& choice, std::optional<double> video_fps,
                       const std::shared_ptr<Vorlin::Plugin>& plugin, const Programme& programme)
    : choice_(choice),
      plan_(planConversion(programme.spec(), choice.chain, {.rate_hz = programme.spec().rate_hz})),
      to_stereo_(stereoSpec(programme.spec().rate_hz)),
      rate_hz_(programme.spec().rate_hz),
      next_frame_(programme.oldest()),
      output_(positionOfNext(programme)),
      measured_until_(output_.end()) {
    conditioner_.emplace(plan_, true);
    match_.emplace(rate_hz_);
    FilterSettings settings;
    settings.chain = choice.chain;
    settings.options = choice.options;
    settings.video_fps = video_fps;
    settings.keep_tail = true;
    chain_ = std::make_unique<EffectChain>(settings, plugin, plan_.work, [this](FramePtr frame) {
        const FramePtr stereo = to_stereo_.convert(plan_.restored(std::move(frame)));
        if (stereo != nullptr) output_.append(*stereo);
    });
    if (chain_->isBypassed()) loss_reason_ = "the load guard passes everything through at this frame rate";
}

void EffectPath::run(const std::function<void()>& work, int64_t frames) {
    const double start_s = threadTime_s();
    try {
        work();
        if (chain_->isBypassed()) loss_reason_ = "the load guard found the filter too slow";
    } catch (const Failure& failure) {
        loss_reason_ = failure.what();
    }
    cpu_s_ = kCpuMemory * cpu_s_ + (threadTime_s() - start_s);
    audio_s_ = kCpuMemory * audio_s_ + static_cast<double>(frames) / rate_hz_;
}

void EffectPath::push(const AVFrame& frame) {
    run(
        [&] {
            const FramePtr work = conditioner_->convert(FramePtr(allocated(av_frame_clone(&frame))));
            if (work != nullptr) chain_->push(*work);
        },
        frame.nb_samples);
}

void EffectPath::finish() {
    is_finished_ = true;
    run(
        [&] {
            if (const FramePtr work = conditioner_->flush(); work != nullptr) chain_->push(*work);
            chain_->finish();
        },
        0);
}

void EffectPath::follow(const Programme& programme, const StereoQueue& original, int64_t most_frames) {
    while (loss_reason_.empty() && most_frames >= 0 && next_frame_ < programme.next()) {
        const AVFrame& frame = *programme.frame(next_frame_++).frame;
        push(frame);
        most_frames -= frame.nb_samples;
    }
    const bool has_all = next_frame_ == programme.next() && programme.isAtEnd();
    if (loss_reason_.empty() && has_all && !is_finished_) finish();
    measure(original);
}

bool EffectPath::isUpToDate(const Programme& programme) const {
    return !loss_reason_.empty() ||
           (next_frame_ == programme.next() && (!programme.isAtEnd() || is_finished_));
}

void EffectPath::seek(const Programme& programme) {
    next_frame_ = programme.oldest();
    is_finished_ = false;
    output_ = StereoQueue(positionOfNext(programme));
    measured_until_ = output_.end();
    readings_.clear();
    match_.emplace(rate_hz_);
    conditioner_.emplace(plan_, true);
    chain_->seek();
}

void EffectPath::measure(const StereoQueue& original) {
    const int64_t end = std::min(output_.end(), original.end());
    std::vector<float> before(2UL * kMeasuredPiece_frames);
    std::vector<float> after(2UL * kMeasuredPiece_frames);
    while (measured_until_ < end) {
        const auto frames = static_cast<int>(std::min<int64_t>(end - measured_until_, kMeasuredPiece_frames));
        original.read(measured_until_, before.data(), frames);
        output_.read(measured_until_, after.data(), frames);
        match_->add(before.data(), after.data(), frames);
        measured_until_ += frames;
        readings_.push_back({measured_until_, match_->reading()});
    }
}

void EffectPath::dropBefore(int64_t position) {
    output_.dropBefore(std::min(position, measured_until_));
}

const MatchReading& EffectPath::readingAt(int64_t position) {
    while (readings_.size() > 1 && readings_.front().position < position) readings_.pop_front();
    return readings_.empty() ? match_->reading() : readings_.front().reading;
}

}  // namespace sonivex_tool
