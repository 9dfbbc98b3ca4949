#include "programme.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "effect.h"
#include "odd_samples.h"
#include "rate_choice.h"

namespace sonivex_tool {
namespace {

// Returns the rates that every effect processes.
std::vector<int> commonRates_hz() {
    std::vector<int> rates_hz = allEffects().front().rates_hz;
    for (const Effect& effect : allEffects()) {
        std::erase_if(rates_hz, [&effect](int rate_hz) {
            return std::find(effect.rates_hz.begin(), effect.rates_hz.end(), rate_hz) ==
                   effect.rates_hz.end();
        });
    }
    return rates_hz;
}

bool soundsAlike(const AudioSpec& one, const AudioSpec& other) {
    return one.rate_hz == other.rate_hz && layoutName(one.layout) == layoutName(other.layout);
}

std::string describe(const AudioSpec& spec) {
    return std::to_string(spec.rate_hz) + " Hz, " + layoutName(spec.layout);
}

AudioSpec programmeSpec(AudioSpec spec) {
    spec.format = AV_SAMPLE_FMT_FLT;
    spec.rate_hz = chooseRate_hz(spec.rate_hz, commonRates_hz());
    return spec;
}

}  // namespace

Programme::Programme(const InputSettings& settings) : source_(settings), heard_(source_.info().spec) {
    converter_.emplace(programmeSpec(source_.info().spec));
}

void Programme::append(FramePtr frame) {
    if (frame == nullptr || frame->nb_samples == 0) return;
    const int64_t position = end_;
    end_ += frame->nb_samples;
    frames_.push_back({std::move(frame), position});
}

void Programme::noteChange(const AudioSpec& spec) {
    const bool is_same = soundsAlike(spec, heard_);
    heard_ = spec;
    if (is_same) return;
    std::string line = "the file goes on with " + describe(spec);
    if (!soundsAlike(spec, this->spec())) line += "; it is converted to " + describe(this->spec());
    changes_.push_back(std::move(line));
}

bool Programme::readOn() {
    if (is_at_end_) return false;
    FramePtr frame = source_.next().frame;
    if (frame == nullptr) {
        is_at_end_ = true;
        append(converter_->flush());
        return false;
    }
    noteChange(specOf(*frame));
    silenceNonFinite(frame);
    append(converter_->convert(std::move(frame)));
    return true;
}

int64_t Programme::seek(double seconds) {
    const AudioSpec target = spec();
    const double position_s = source_.seek(seconds);
    converter_.emplace(target);
    oldest_ = next();
    frames_.clear();
    is_at_end_ = false;
    end_ = std::llround(position_s * target.rate_hz);
    return end_;
}

void Programme::forgetBefore(int64_t position, uint64_t number) {
    while (!frames_.empty() && oldest_ < number) {
        const ProgrammeFrame& first = frames_.front();
        if (first.position + first.frame->nb_samples > position) return;
        frames_.pop_front();
        ++oldest_;
    }
}

}  // namespace sonivex_tool
