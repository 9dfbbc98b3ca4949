#include "bypass_control.h"

#include <array>
#include <charconv>
#include <exception>
#include <new>
#include <string_view>

#include "vorlin/filter_prototype.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr char kLogTag[] = "Player";

// std::to_string is unsuitable: its decimal point depends on the locale, and it always writes six decimal
// places.
std::string numberText(double value) {
    constexpr size_t kLongestDoubleBytes = 32;
    std::array<char, kLongestDoubleBytes> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

}  // namespace

BypassControl::BypassControl(IAudioFilter& filter) : mFilter(filter), mEventPrefix(filter.getName() + ":") {
    filter.setDCA([this](int, const std::string& event) { obey(event); });
}

void BypassControl::apply() {
    mFilter.setInvalid(isBypassed());
}

void BypassControl::setListener(bool bypass) {
    if (bypass) {
        mListener = true;
        apply();
    } else {
        endReason(mListener);
    }
}

void BypassControl::retryAfterOverload() {
    endReason(mOverload);
}

void BypassControl::endReason(bool& reason) {
    if (!reason) return;
    reason = false;
    // The filter is still set invalid. It could not announce what it found meanwhile, but it answers a
    // question.
    mOverFps = mFilter.isOverFps();
    apply();
}

BypassControl::RateAnswer BypassControl::reportRate(const std::string& key, double value) {
    // Only a valid filter announces its recovery.
    if (mOverFps && !mListener && !mOverload) mFilter.setInvalid(false);
    RateAnswer answer = RateAnswer::Taken;
    try {
        mFilter.setOption(key, numberText(value), {});
    } catch (const std::bad_alloc&) {
        answer = RateAnswer::NoMemory;
    } catch (const std::exception& refusal) {
        __log_print(LOG_WARNING, kLogTag, "%s refused %s = %g: %s", mEventPrefix.c_str(), key.c_str(), value,
                    refusal.what());
        answer = RateAnswer::Refused;
    }
    apply();
    return answer;
}

// It needs no memory, so that an announcement never gets lost.
void BypassControl::obey(const std::string& event) {
    const std::string_view text = event;
    const std::string_view name = text.starts_with(mEventPrefix) ? text.substr(mEventPrefix.size()) : "";
    if (name == filterPrototype::FILTER_INVALID_OVER_FPS) {
        mOverFps = true;
    } else if (name == filterPrototype::FILTER_VALID_RECOVERY) {
        mOverFps = false;
    } else if (name == filterPrototype::FILTER_INVALID_PERFORMANCE) {
        mOverload = true;
    } else {
        __log_print(LOG_DEBUG, kLogTag, "unknown event %s", event.c_str());
        return;
    }
    apply();
}

}  // namespace Vorlin
