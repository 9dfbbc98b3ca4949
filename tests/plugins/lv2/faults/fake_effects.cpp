#include "fake_effects.h"

#include <algorithm>

#include "sonivex/effect.h"

// Its output is the number of its type in every sample.
struct SonivexEffect {
    int kind;
    int channels;
    int type;
};

namespace test {

FakeEffects& fakeEffects() {
    static FakeEffects effects;
    return effects;
}

}  // namespace test

namespace {

int make(SonivexEffect** effect, const SonivexEffect& like) {
    auto& effects = test::fakeEffects();
    *effect = nullptr;
    if (effects.next_status != SONIVEX_OK) return effects.next_status;
    *effect = new SonivexEffect(like);
    ++effects.alive;
    ++effects.made;
    return SONIVEX_OK;
}

}  // namespace

int sonivex_has_effect(int kind) {
    return kind != test::fakeEffects().missing_kind ? 1 : 0;
}
int sonivex_create_surround(SonivexEffect** effect, int channels, int, int type, int, int) {
    return make(effect, {SONIVEX_SURROUND, channels, type});
}
int sonivex_create_dialogue(SonivexEffect** effect, int, double) {
    return make(effect, {SONIVEX_DIALOGUE, 2, 1});
}
int sonivex_create_normalizer(SonivexEffect** effect, int channels, int) {
    return make(effect, {SONIVEX_NORMALIZER, channels, 1});
}
void sonivex_release(SonivexEffect* effect) {
    if (effect == nullptr) return;
    --test::fakeEffects().alive;
    delete effect;
}
void sonivex_reset(SonivexEffect*) {}
int sonivex_set_voice_level(SonivexEffect*, double) {
    return SONIVEX_OK;
}
int sonivex_stream_latency_frames(const SonivexEffect*) {
    return 240;
}
int sonivex_tail_frames(const SonivexEffect*) {
    return 1000;
}
int sonivex_stream_float(SonivexEffect* effect, const float* const*, float* const* out, int frames) {
    const int channels_out = effect->kind == SONIVEX_SURROUND ? 2 : effect->channels;
    for (int i = 0; i < channels_out; ++i) std::fill_n(out[i], frames, static_cast<float>(effect->type));
    return SONIVEX_OK;
}
const char* sonivex_status_text(int status) {
    return status == SONIVEX_ERROR_MEMORY ? "memory ran out" : "another error";
}
