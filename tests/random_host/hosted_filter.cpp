#include "random_host/hosted_filter.h"

#include <functional>
#include <stdexcept>
#include <utility>

#include "random_host/promise.h"
#include "random_host/pulled_frame.h"
#include "vorlin/filter_prototype.h"

namespace test {

namespace {

constexpr std::uint64_t kDoNotWait_ms = 0;
constexpr int kNoCode = 0;
constexpr int kLowestRate_hz = 8000;  // a frame of a lower rate does not count as audio

}  // namespace

HostCounts& HostCounts::operator+=(const HostCounts& more) {
    pushed += more.pushed;
    refused += more.refused;
    pulled += more.pulled;
    processed += more.processed;
    given_up += more.given_up;
    thrown_away += more.thrown_away;
    flushes += more.flushes;
    filters += more.filters;
    streams += more.streams;
    events += more.events;
    audio_s += more.audio_s;
    return *this;
}

HostedFilter::HostedFilter(std::unique_ptr<Vorlin::IAudioFilter> filter, bool is_active, HostCounts& counts)
    : is_active_(is_active),
      counts_(counts),
      filter_(std::move(filter)),
      timing_(dynamic_cast<const Vorlin::ITimedFilter*>(filter_.get())) {
    promise(timing_ != nullptr, "the filter tells how late it is");
    ++counts_.filters;
}

HostedFilter::~HostedFilter() {
    const ThrowingAway throwing_away;
    filter_.reset();
}

void HostedFilter::push(RandomFrame made) {
    if (made.note.kind != FrameNote::Kind::kNull) {
        const auto effect = static_cast<int>(model_.effectFor(made.note.info));
        promise(timing_->timing(made.note.info).effect == effect, "a filter knows its effect");
    }
    const auto record = made.note.record;
    const bool is_audible = made.note.is_honest && made.note.rate_hz >= kLowestRate_hz;
    const double seconds = is_audible ? static_cast<double>(made.note.frames) / made.note.rate_hz : 0.0;
    if (record) record->set(Fate::kInside);  // the worker may take it at once
    inside_.push_back(std::move(made.note));
    const bool is_foretold = !is_active_;
    const bool is_accepted = model_.accepts();
    if (is_foretold && is_accepted) model_.take(inside_.back());

    const int result = filter_->push(made.frame, kDoNotWait_ms);
    promise(result == Vorlin::kSuccess || result == Vorlin::kTryAgain, "push succeeds or asks to try again");
    if (result == Vorlin::kSuccess) {
        promise(made.frame == nullptr, "a filter owns the frame that it takes");
        ++counts_.pushed;
        counts_.audio_s += seconds;
    } else {
        promise(made.frame.get() == inside_.back().object, "a filter leaves the frame that it refuses");
        if (record) record->set(Fate::kWithHost);
        inside_.pop_back();
        ++counts_.refused;
    }
    if (!is_foretold) return;
    promise((result == Vorlin::kSuccess) == is_accepted, "a filter takes a frame while it has room");
    model_.work();
}

bool HostedFilter::pull(bool into_full) {
    std::unique_ptr<Vorlin::IQFFrame> frame;
    if (into_full) frame = std::move(last_);
    const Vorlin::IQFFrame* const before = frame.get();
    const int result = filter_->pull(frame, kDoNotWait_ms);
    if (result != Vorlin::kSuccess) {
        promise(result == Vorlin::kTryAgain, "pull succeeds or asks to try again");
        promise(frame.get() == before, "a pull without a frame leaves the variable as it was");
        promise(is_active_ || !model_.hasFinished(), "a finished frame comes out");
        return false;
    }
    dropGivenUp();
    promise(!inside_.empty(), "no frame comes out that did not go in");
    const FrameNote note = std::move(inside_.front());
    inside_.pop_front();
    if (note.record) {
        promise(note.record->fate() == Fate::kInside, "a frame comes out once");
        note.record->set(Fate::kCameOut);
    }
    // An effect may put its samples into the buffer of the frame, which then looks untouched.
    const bool looks_untouched = isUntouched(frame.get(), note);
    FilterModel::Finished finished{.way = looks_untouched ? Way::kUntouched : Way::kProcessed, .shape = {}};
    if (!is_active_) {
        promise(model_.hasFinished(), "an unfinished frame does not come out");
        finished = model_.pull();
    }
    if (finished.way == Way::kProcessed) {
        checkProcessed(frame.get(), note, finished.shape);
        ++counts_.processed;
    } else {
        promise(looks_untouched, "a frame is processed only by an effect");
    }
    checkShared(note);
    ++counts_.pulled;
    last_ = std::move(frame);
    return true;
}

// Frames that were given up do not come out.
void HostedFilter::dropGivenUp() {
    while (!inside_.empty() && inside_.front().record && inside_.front().record->isGivenUp()) {
        checkShared(inside_.front());
        inside_.pop_front();
        ++counts_.given_up;
    }
}

void HostedFilter::flush() {
    {
        const ThrowingAway throwing_away;
        filter_->flush();
    }
    forgetInside();
    model_.flush();
    ++counts_.flushes;
}

void HostedFilter::rest() {
    flush();
    last_.reset();
    filter_->setCurrentTarget({});
}

void HostedFilter::destroy() {
    {
        const ThrowingAway throwing_away;
        filter_.reset();
    }
    forgetInside();
}

void HostedFilter::forgetInside() {
    for (const FrameNote& note : inside_) {
        const bool is_given_up = note.record && note.record->isGivenUp();
        promise(is_given_up || !note.record || note.record->fate() == Fate::kThrownAway,
                "a flush destroys every frame inside");
        ++(is_given_up ? counts_.given_up : counts_.thrown_away);
        checkShared(note);
    }
    inside_.clear();
}

void HostedFilter::setInvalid(bool is_invalid) {
    filter_->setInvalid(is_invalid);
    model_.setInvalid(is_invalid);
}

bool HostedFilter::setOptions(const std::string& text) {
    const bool is_taken = filter_->setOption(Vorlin::filterPrototype::FILTER_OPTION, text, "");
    promise(is_taken == model_.setOptions(text), "a filter takes every text that is JSON, and no other");
    return is_taken;
}

void HostedFilter::setNumber(const char* key, const std::string& text) {
    try {
        promise(filter_->setOption(key, text, ""), "only a damaged JSON object is refused");
    } catch (const std::invalid_argument&) {
        return;  // no number
    }
}

void HostedFilter::checkTimeConsume(std::uint64_t elapsed_ms) {
    try {
        filter_->checkTimeConsume(elapsed_ms);
    } catch (const std::bad_function_call&) {
        model_.setInvalid(true);  // nobody listens
    }
}

void HostedFilter::listen(bool hears, bool obeys) {
    if (!hears) {
        filter_->setDCA({});
        return;
    }
    filter_->setDCA([this, obeys](int code, const std::string& event) {
        promise(code == kNoCode, "an event has the code 0");
        answer(event, obeys);
    });
}

void HostedFilter::answer(const std::string& event, bool obeys) {
    using Vorlin::filterPrototype;
    const std::string prefix = filter_->getName() + ":";
    const bool is_overload = event == prefix + filterPrototype::FILTER_INVALID_PERFORMANCE;
    const bool is_over_fps = event == prefix + filterPrototype::FILTER_INVALID_OVER_FPS;
    promise(is_overload || is_over_fps || event == prefix + filterPrototype::FILTER_VALID_RECOVERY,
            "a filter sends only the events of its interface");
    ++counts_.events;
    if (is_overload) model_.setInvalid(true);  // the filter has done so itself
    if (obeys) setInvalid(is_overload || is_over_fps);
}

}  // namespace test
