#include "models/normalizer_model.h"

#include <algorithm>
#include <cmath>

namespace model {
namespace {

constexpr std::size_t kQueueSamples = 81920 - 1;

float magnitudeOf(float x) {
    return x < 0 ? -x : x;
}

std::int16_t toPcm(float x) {
    const float whole = std::trunc(x);
    if (whole > 32767) return 32767;
    if (whole < -32768) return -32768;
    return static_cast<std::int16_t>(whole);
}

}  // namespace

float Limiter::targetGain(float level) {
    if (level > ceiling_ && !is_limiting_) {
        is_limiting_ = true;
        window_.clear();
    }
    if (!is_limiting_) return 1;

    window_.push_back(level);
    if (window_.size() > 64) window_.pop_front();
    const float maximum = *std::max_element(window_.begin(), window_.end());
    if (maximum > ceiling_) return ceiling_ / maximum;
    is_limiting_ = false;
    return 1;
}

float Limiter::nextOutput(float target, float x) {
    const float kept = smoothed_ * 0.8999F;
    const float added = target * 0.0999F;
    smoothed_ = kept + added;
    const float released = gain_ * 0.9999F;
    const float risen = released + 0.0001F;
    gain_ = smoothed_ < risen ? smoothed_ : risen;
    if (magnitudeOf(gain_ * x) > ceiling_) gain_ = ceiling_ / magnitudeOf(x);
    return gain_ * x;
}

std::vector<float> Limiter::process(const std::vector<float>& block) {
    float loudest = 0;
    for (const float x : block) loudest = std::max(loudest, magnitudeOf(x));

    std::vector<float> out;
    for (const float x : block) {
        const bool by_call = detection_ == Detection::kLoudestOfTheCall;
        past_.push_back(x);
        const float heard = by_call ? x : past_.front();
        past_.pop_front();
        const float target = targetGain(by_call ? loudest : magnitudeOf(x));
        out.push_back(nextOutput(target, heard));
    }
    return out;
}

std::vector<std::int16_t> Normalizer::processBlock(const std::vector<std::int16_t>& block) {
    double peak = 0;
    for (const std::int16_t s : block) peak = std::max(peak, std::fabs(static_cast<double>(s)));

    const float level_db = static_cast<float>(20 * std::log10(peak / 32768));
    const float over = level_db + gain_db_;
    if (over > 0) {
        gain_db_ = gain_db_ - (over > 3 ? over : 3);
        if (gain_db_ < 0) gain_db_ = 0;
    }

    const float exponent = gain_db_ / 20;
    const float factor = static_cast<float>(std::pow(10.0, static_cast<double>(exponent)));
    std::vector<float> raised;
    for (const std::int16_t s : block) raised.push_back(factor * static_cast<float>(s));

    std::vector<float> mixed;
    for (const float x : mixer_limiter_.process(raised)) mixed.push_back(static_cast<float>(toPcm(x)));

    std::vector<std::int16_t> out;
    for (const float x : output_limiter_.process(mixed)) out.push_back(toPcm(x));
    return out;
}

std::vector<std::int16_t> Normalizer::process(const std::vector<std::int16_t>& in) {
    for (const std::int16_t s : in) {
        if (waiting_.size() < kQueueSamples) waiting_.push_back(s);
    }

    const auto block_samples = static_cast<std::ptrdiff_t>(channels_ * 512);
    while (waiting_.size() >= static_cast<std::size_t>(block_samples)) {
        const std::vector<std::int16_t> block(waiting_.begin(), waiting_.begin() + block_samples);
        waiting_.erase(waiting_.begin(), waiting_.begin() + block_samples);
        for (const std::int16_t s : processBlock(block)) {
            if (done_.size() < kQueueSamples) done_.push_back(s);
        }
    }

    std::vector<std::int16_t> out(in.size(), 0);
    if (done_.size() >= in.size()) {
        const auto count = static_cast<std::ptrdiff_t>(in.size());
        std::copy(done_.begin(), done_.begin() + count, out.begin());
        done_.erase(done_.begin(), done_.begin() + count);
    }
    return out;
}

}  // namespace model
