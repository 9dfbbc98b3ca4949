#include "fake_filter.h"

#include <new>
#include <utility>

#include "vorlin/av_frame.h"

namespace Vorlin::test {

namespace {

constexpr int kTryAgain = -35;
constexpr int kGivenUp = -1;
constexpr int kFirstProductOver = 62;
constexpr int64_t kIdle_ms = 2;

bool isFence(const IQFFrame& frame) {
    return dynamic_cast<const NumberedFrame*>(&frame) == nullptr;
}

}  // namespace

FakeFilter::FakeFilter(std::string supported_name, std::shared_ptr<Script> script)
    : supported_name_(std::move(supported_name)), script_(std::move(script)), is_prototype_(true) {
    addPrototype(this);
}

FakeFilter::FakeFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active,
                       std::shared_ptr<Script> script)
    : IAudioFilter(src, dst, active), script_(std::move(script)) {}

FakeFilter::~FakeFilter() {
    thread_.reset();
    if (is_prototype_) return;
    if (script_->sends_at_its_end) send(FILTER_INVALID_PERFORMANCE);
    script_->is_destroyed = true;
}

IAudioFilter* FakeFilter::clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) {
    return new FakeFilter(src, dst, active, script_);
}

bool FakeFilter::init(uint64_t) {
    if (!script_->init_succeeds) return false;
    if (script_->init_throws) throw std::bad_alloc();
    if (mActive) {
        thread_ = std::make_unique<qfThread>([this] { return loop(); }, kName);
        script_->worker_clock = thread_->clock();
        thread_->start();
    }
    return true;
}

bool FakeFilter::setOption(const std::string& key, const std::string& value, const std::string&) {
    if (script_->options_without_memory > 0) {
        --script_->options_without_memory;
        throw std::bad_alloc();
    }
    script_->options.push_back(key + "=" + value);
    if (key == VIDEO_FPS_OPTION) {
        fps_ = static_cast<int>(std::stod(value));
        over_fps_ = isOverFps();
    } else if (key == PLAYER_SPEED_OPTION) {
        speed_ = static_cast<int>(std::stof(value));
        over_fps_ = isOverFps();
    }
    return key != FILTER_OPTION || !value.empty();
}

int FakeFilter::push(std::unique_ptr<IQFFrame>& frame, uint64_t) {
    int result = kTryAgain;
    {
        const std::lock_guard lock(mutex_);
        if (in_.size() <= 1 && out_.size() < 3) {
            if (isFence(*frame)) {
                script_->fences.push_back(frame->getInfo());
                const auto* av_frame = dynamic_cast<AVQFFrame*>(frame.get());
                if (av_frame == nullptr || static_cast<AVFrame*>(*av_frame) == nullptr) {
                    script_->fences_hold_samples = false;
                }
            }
            in_.push_back(std::move(frame));
            result = 0;
        } else {
            ++script_->refusals;
        }
    }
    if (!mActive) loop();
    return result;
}

int FakeFilter::pull(std::unique_ptr<IQFFrame>& frame, uint64_t) {
    const std::lock_guard lock(mutex_);
    if (out_.empty()) return kTryAgain;
    frame = std::move(out_.front());
    out_.pop_front();
    return 0;
}

void FakeFilter::flush() {
    ++script_->flushes;
    if (thread_) thread_->pause();
    in_.clear();
    out_.clear();
    if (thread_) thread_->start();
}

std::unique_ptr<IQFFrame> FakeFilter::take() {
    const std::lock_guard lock(mutex_);
    if (script_->is_stuck || in_.empty() || out_.size() > 1) return nullptr;
    auto frame = std::move(in_.front());
    in_.pop_front();
    return frame;
}

// Processes one frame. @return false if the filter gives it up.
bool FakeFilter::treat(const IQFFrame& frame) {
    const auto* numbered = dynamic_cast<const NumberedFrame*>(&frame);
    if (numbered == nullptr) return !script_->eats_fences;
    if (invalid_) return true;
    if (!script_->keeps(*numbered)) return false;
    script_->work();
    ++script_->processed;
    return true;
}

int FakeFilter::loop() {
    if (script_->runs_to_skip > 0) {
        --script_->runs_to_skip;
        return 0;
    }
    for (int taken = 0; taken < script_->frames_per_run; ++taken) {
        auto frame = take();
        if (!frame) {
            if (mActive) qf_msleep(kIdle_ms);
            return 0;
        }
        if (!treat(*frame)) return kGivenUp;
        const std::lock_guard lock(mutex_);
        out_.push_back(std::move(frame));
        ++script_->finished;
    }
    return 0;
}

void FakeFilter::setInvalid(bool invalid) {
    invalid_ = invalid;
    script_->is_invalid = invalid;
    if (!invalid) ++script_->times_made_valid;
}

void FakeFilter::send(const char* event) {
    mEventCallback(0, getName() + ":" + event);
}

bool FakeFilter::isOverFps() {
    const bool is_over = speed_ * fps_ >= kFirstProductOver;
    if (!invalid_ && is_over != over_fps_) send(is_over ? FILTER_INVALID_OVER_FPS : FILTER_VALID_RECOVERY);
    return is_over;
}

void FakeFilter::checkTimeConsume(uint64_t elapsed) {
    script_->samples_ms.push_back(elapsed);
    if (invalid_ || elapsed < script_->overload_from_ms) return;
    setInvalid(true);
    send(FILTER_INVALID_PERFORMANCE);
}

}  // namespace Vorlin::test
