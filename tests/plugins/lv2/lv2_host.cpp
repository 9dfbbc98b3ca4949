#include "plugins/lv2/lv2_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"

namespace test {
namespace {

constexpr double kRate_hz = 48000.0;
constexpr double kFullScale = 32768.0;

const char* const kSymbol = "lv2_descriptor";

Pcm toPcm(const Planes& planes) {
    Pcm samples;
    for (std::size_t i = 0; i < planes[0].size(); ++i) {
        for (const auto& plane : planes) {
            samples.push_back(static_cast<std::int16_t>(std::lround(plane[i] * kFullScale)));
        }
    }
    return samples;
}

Planes toPlanes(const Pcm& samples, std::size_t channels, std::size_t frames, std::size_t delay) {
    Planes planes(channels, std::vector<float>(frames));
    for (std::size_t i = delay; i < frames; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            planes[channel][i] = static_cast<float>(samples[(i - delay) * channels + channel] / kFullScale);
        }
    }
    return planes;
}

}  // namespace

LV2_Descriptor_Function lv2DescriptorFunction() {
    // The library stays loaded, as in most hosts.
    static void* const library = dlopen(SONIVEX_LV2_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        ADD_FAILURE() << dlerror();
        return nullptr;
    }
    return reinterpret_cast<LV2_Descriptor_Function>(dlsym(library, kSymbol));
}

const LV2_Descriptor* findLv2Descriptor(const std::string& uri) {
    const auto function = lv2DescriptorFunction();
    for (std::uint32_t i = 0; const LV2_Descriptor* descriptor = function(i); ++i) {
        if (uri == descriptor->URI) return descriptor;
    }
    return nullptr;
}

Lv2Plugin::Lv2Plugin(const Lv2Kind& kind, double rate_hz, FakeLv2Worker* worker)
    : kind_(kind), descriptor_(findLv2Descriptor(kind.uri)) {
    // The library only reads the schedule. LV2 declares it as changeable data all the same.
    LV2_Feature schedule = {LV2_WORKER__schedule, worker == nullptr
                                                      ? nullptr
                                                      : const_cast<LV2_Worker_Schedule*>(worker->schedule())};
    const LV2_Feature* const none[] = {nullptr};
    const LV2_Feature* const with_worker[] = {&schedule, nullptr};
    instance_ = descriptor_->instantiate(descriptor_, rate_hz, "/", worker == nullptr ? none : with_worker);
    if (instance_ == nullptr) {
        ADD_FAILURE() << "the plug-in was not made";
        return;
    }
    if (worker != nullptr && descriptor_->extension_data != nullptr) {
        worker->serve(instance_, static_cast<const LV2_Worker_Interface*>(
                                     descriptor_->extension_data(LV2_WORKER__interface)));
    }
    if (kind.effect == Lv2Effect::kSurround) {
        controls_ = {0, -1, 1, 1, 1};
    } else {
        controls_ = {0, -1, 1, 0, 0};
    }
    connectControls();
    descriptor_->activate(instance_);
}

Lv2Plugin::~Lv2Plugin() {
    if (instance_ == nullptr) return;
    if (descriptor_->deactivate != nullptr) descriptor_->deactivate(instance_);
    descriptor_->cleanup(instance_);
}

void Lv2Plugin::restart() {
    if (descriptor_->deactivate != nullptr) descriptor_->deactivate(instance_);
    descriptor_->activate(instance_);
}

void Lv2Plugin::connect(std::size_t port, void* location) {
    descriptor_->connect_port(instance_, static_cast<std::uint32_t>(port), location);
}

void Lv2Plugin::connectControls() {
    std::size_t count = 2;
    if (kind_.effect == Lv2Effect::kSurround) count = 5;
    if (kind_.effect == Lv2Effect::kDialogue) count = 3;
    for (std::size_t i = 0; i < count; ++i) {
        connect(kind_.channels_in + kind_.channels_out + i, &controls_[i]);
    }
}

void Lv2Plugin::run(const Planes& in, Planes& out, std::size_t first, std::size_t frames) {
    std::size_t port = 0;
    // LV2 passes inputs as changeable, too.
    for (const auto& plane : in) connect(port++, const_cast<float*>(plane.data() + first));
    for (auto& plane : out) connect(port++, plane.data() + first);
    run(static_cast<std::uint32_t>(frames));
}

Planes Lv2Plugin::process(const Planes& in, const std::vector<std::size_t>& blocks) {
    const std::size_t frames = in[0].size();
    Planes out(kind_.channels_out, std::vector<float>(frames));
    for (std::size_t first = 0, i = 0; first < frames; ++i) {
        const std::size_t block = std::min(blocks[i % blocks.size()], frames - first);
        run(in, out, first, block);
        first += block;
    }
    return out;
}

Planes noisePlanes(std::uint64_t seed, std::size_t channels, std::size_t frames, int amplitude) {
    const Pcm samples = noise(seed, static_cast<int>(channels * frames), amplitude);
    return toPlanes(samples, channels, frames, 0);
}

Planes tonePlanes(std::size_t channels, std::size_t frames, double amplitude) {
    constexpr double kTone_hz = 440.0;
    Planes planes(channels, std::vector<float>(frames));
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2.0 * std::numbers::pi * kTone_hz * static_cast<double>(i) / kRate_hz;
        for (auto& plane : planes) plane[i] = static_cast<float>(amplitude * std::sin(phase));
    }
    return planes;
}

Planes effectOutput(const Lv2Kind& kind, const Lv2Settings& settings, const Planes& in, std::size_t delay) {
    const int block = kind.effect == Lv2Effect::kSurround ? 240 : 512;
    const std::size_t frames = in[0].size();
    // Whole blocks only.
    Planes padded = in;
    for (auto& plane : padded)
        plane.resize((frames / static_cast<std::size_t>(block) + 1) * static_cast<std::size_t>(block));
    const auto channels = static_cast<int>(kind.channels_in);
    const Pcm samples = toPcm(padded);
    Pcm out;
    if (kind.effect == Lv2Effect::kSurround) {
        SurroundEffect effect(channels, settings.type, settings.mode, settings.limiter, settings.rate_hz);
        out = effect.processInCallsOf(block, samples);
    } else if (kind.effect == Lv2Effect::kDialogue) {
        DialogueEffect effect({.rate_hz = settings.rate_hz, .voice_level = settings.voice});
        out = effect.processInCallsOf(block, samples);
    } else {
        NormalizerEffect effect(channels);
        out = effect.processInCallsOf(block, samples);
    }
    return toPlanes(out, kind.channels_out, frames, delay);
}

double secondDifference(const Planes& sound, std::size_t first, std::size_t last) {
    double greatest = 0.0;
    for (const auto& plane : sound) {
        for (std::size_t i = first + 1; i + 1 < last; ++i) {
            const double bend = double{plane[i + 1]} - 2.0 * plane[i] + plane[i - 1];
            greatest = std::max(greatest, std::abs(bend));
        }
    }
    return greatest;
}

}  // namespace test
