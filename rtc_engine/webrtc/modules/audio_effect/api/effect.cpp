#include "sonivex/effect.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include "effect_kinds.h"
#include "effect_state.h"
#include "prepare_to_throw.h"
#include "rounding.h"
#include "sample_rounding.h"

namespace {

using sonivex::EffectKind;
using sonivex::EffectSettings;
using sonivex::findEffectKind;

constexpr double kHighestVoiceLevel = 100.0;

std::size_t samplesOf(int frames, int channels) {
    return static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels);
}

std::unique_ptr<std::int16_t[]> makeSilence(int frames, int channels) {
    return std::make_unique<std::int16_t[]>(samplesOf(frames, channels));
}

// Throws std::bad_alloc. Returns null if the effect's own handle gets no memory.
std::unique_ptr<SonivexEffect> makeEffect(const EffectKind& kind, const EffectSettings& settings) {
    auto effect = std::make_unique<SonivexEffect>();
    effect->kind = &kind;
    effect->settings = settings;
    effect->timing = kind.timing(settings);
    effect->output_channels = kind.output_channels(settings);
    effect->call_in = makeSilence(SONIVEX_MAX_CALL_FRAMES, settings.channels);
    effect->call_out = makeSilence(SONIVEX_MAX_CALL_FRAMES, effect->output_channels);
    effect->block_in = makeSilence(effect->timing.block_frames, settings.channels);
    effect->block_out = makeSilence(effect->timing.block_frames, effect->output_channels);
    effect->handle = kind.create(settings);
    if (effect->handle == nullptr) return nullptr;
    return effect;
}

int create(SonivexEffect** effect, int kind_number, const EffectSettings& settings) {
    if (effect == nullptr) return SONIVEX_ERROR_ARGUMENT;
    *effect = nullptr;
    const EffectKind* const kind = findEffectKind(kind_number);
    if (kind == nullptr) return SONIVEX_ERROR_NOT_BUILT;
    if (const int status = kind->check(settings); status != SONIVEX_OK) return status;
    if (!sonivex::prepareToThrow()) return SONIVEX_ERROR_MEMORY;
    try {
        *effect = makeEffect(*kind, settings).release();
    } catch (const std::bad_alloc&) {
        return SONIVEX_ERROR_MEMORY;
    }
    return *effect == nullptr ? SONIVEX_ERROR_MEMORY : SONIVEX_OK;
}

bool isVoiceLevel(double level) {
    return level >= 0.0 && level <= kHighestVoiceLevel;
}

// Returns whether a call of interleaved samples may go on.
bool isValidCall(const SonivexEffect* effect, const void* in, const void* out, int frames) {
    if (effect == nullptr || frames < 0 || frames > SONIVEX_MAX_CALL_FRAMES) return false;
    return frames == 0 || (in != nullptr && out != nullptr);
}

}  // namespace

int sonivex_has_effect(int kind) {
    return findEffectKind(kind) != nullptr ? 1 : 0;
}

int sonivex_create_surround(SonivexEffect** effect, int channels, int sample_rate_hz, int type, int mode,
                            int limiter) {
    return create(effect, SONIVEX_SURROUND,
                  {.channels = channels,
                   .sample_rate_hz = sample_rate_hz,
                   .type = type,
                   .mode = mode,
                   .limiter = limiter});
}

int sonivex_create_dialogue(SonivexEffect** effect, int sample_rate_hz, double voice_level) {
    if (!isVoiceLevel(voice_level)) {
        if (effect != nullptr) *effect = nullptr;
        return SONIVEX_ERROR_ARGUMENT;
    }
    return create(effect, SONIVEX_DIALOGUE,
                  {.channels = 2, .sample_rate_hz = sample_rate_hz, .voice_level = voice_level});
}

int sonivex_create_normalizer(SonivexEffect** effect, int channels, int sample_rate_hz) {
    return create(effect, SONIVEX_NORMALIZER, {.channels = channels, .sample_rate_hz = sample_rate_hz});
}

void sonivex_release(SonivexEffect* effect) {
    delete effect;
}

void sonivex_reset(SonivexEffect* effect) {
    if (effect == nullptr) return;
    effect->kind->reset(effect->handle);
    std::fill_n(effect->block_out.get(), samplesOf(effect->timing.block_frames, effect->output_channels),
                std::int16_t{0});
    effect->filled_frames = 0;
}

int sonivex_set_voice_level(SonivexEffect* effect, double voice_level) {
    if (effect == nullptr || effect->kind->set_voice_level == nullptr || !isVoiceLevel(voice_level)) {
        return SONIVEX_ERROR_ARGUMENT;
    }
    effect->kind->set_voice_level(effect->handle, voice_level);
    return SONIVEX_OK;
}

int sonivex_input_channels(const SonivexEffect* effect) {
    return effect == nullptr ? 0 : effect->settings.channels;
}

int sonivex_output_channels(const SonivexEffect* effect) {
    return effect == nullptr ? 0 : effect->output_channels;
}

int sonivex_block_frames(const SonivexEffect* effect) {
    return effect == nullptr ? 0 : effect->timing.block_frames;
}

int sonivex_stream_latency_frames(const SonivexEffect* effect) {
    return effect == nullptr ? 0 : effect->timing.block_frames + effect->timing.own_delay_frames;
}

int sonivex_latency_frames(const SonivexEffect* effect, int call_frames) {
    if (effect == nullptr || call_frames < 1 || call_frames > SONIVEX_MAX_CALL_FRAMES)
        return SONIVEX_ERROR_ARGUMENT;
    const auto delay = sonivex::delayInCalls_frames(effect->timing, call_frames);
    return delay ? static_cast<int>(*delay) : SONIVEX_ERROR_GAPS;
}

int sonivex_tail_frames(const SonivexEffect* effect) {
    return effect == nullptr ? 0 : effect->timing.tail_frames;
}

int sonivex_process_int16(SonivexEffect* effect, const int16_t* in, int16_t* out, int frames) {
    if (!isValidCall(effect, in, out, frames)) return SONIVEX_ERROR_ARGUMENT;
    if (frames > 0) effect->kind->process(effect->handle, effect->settings, in, out, frames);
    return SONIVEX_OK;
}

int sonivex_process_float(SonivexEffect* effect, const float* in, float* out, int frames) {
    if (!isValidCall(effect, in, out, frames)) return SONIVEX_ERROR_ARGUMENT;
    if (frames == 0) return SONIVEX_OK;
    const sonivex::RoundingToNearest rounding;
    std::transform(in, in + samplesOf(frames, effect->settings.channels), effect->call_in.get(),
                   sonivex::roundToInt16);
    effect->kind->process(effect->handle, effect->settings, effect->call_in.get(), effect->call_out.get(),
                          frames);
    std::transform(effect->call_out.get(),
                   effect->call_out.get() + samplesOf(frames, effect->output_channels), out,
                   sonivex::floatOf);
    return SONIVEX_OK;
}
