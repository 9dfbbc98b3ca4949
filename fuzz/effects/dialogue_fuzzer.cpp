// Dialogue enhancement through its C functions. The input begins with the rate and either a voice level, for
// a handle that is reused, or all settings as doubles, for a handle of its own. Calls follow, see
// aem_calls.cpp.

#include "sonivex/dialoguenhance.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <tuple>

#include "aem_calls.h"
#include "dialogue_control.h"
#include "support/promise.h"

namespace {

using fuzz::AemEffect;
using fuzz::ByteStream;
using fuzz::require;

struct Settings {
    int rate_hz;
    double gain_floor, gain_scale, voice_level;
};

int hopOf(int rate_hz) {
    if (rate_hz > 100000) return 2048;
    return rate_hz > 50000 ? 1024 : 512;
}

bool isFiniteAsFloat(double number) {
    return std::isfinite(static_cast<float>(number)) && std::abs(number) <= std::numeric_limits<float>::max();
}

/** Returns one of two handles with gains of 1, as new. Making one takes longer than most inputs. */
void* reused(int hop_frames, double voice_level, int number) {
    static auto& handles = *new std::map<std::tuple<int, int>, void*>;
    void*& handle = handles[{hop_frames, number}];
    if (handle == nullptr) {
        handle = sonivex::createDialogue(hop_frames == 512    ? 48000
                                         : hop_frames == 1024 ? 96000
                                                              : 192000,
                                         voice_level);
        require(handle != nullptr, "dialogue enhancement is made");
    } else {
        sonivex::resetDialogue(handle);
        sonivex::setDialogueVoiceLevel(handle, voice_level);
    }
    return handle;
}

void* make(const Settings& settings) {
    return aem_CreateDialoguEnhance(2, settings.rate_hz, settings.gain_floor, settings.gain_scale,
                                    settings.voice_level);
}

AemEffect effectWith(int rate_hz, void* handle) {
    return {.handle = handle,
            .width_in = 2,
            .width_out = 2,
            .block_frames = hopOf(rate_hz),
            .process = [rate_hz](void* used, const std::int16_t* in, std::int16_t* out, int frames) {
                return aem_ProcessDialoguEnhance(used, in, out, frames, rate_hz);
            }};
}

void useHandlesOfItsOwn(ByteStream& stream, int rate_hz) {
    const Settings settings = {rate_hz, stream.longReal(), stream.longReal(), stream.longReal()};
    void* const handle = make(settings);
    const bool is_valid = isFiniteAsFloat(settings.gain_floor) && isFiniteAsFloat(settings.gain_scale) &&
                          isFiniteAsFloat(settings.voice_level);
    require((handle != nullptr) == is_valid, "finite gains get a handle, and no others do");
    if (handle == nullptr) return;
    void* const reference = make(settings);
    require(reference != nullptr, "the same settings get a handle again");
    fuzz::makeAemCalls(stream, effectWith(rate_hz, handle), effectWith(rate_hz, reference));
    aem_ReleaseDialoguEnhance(reference);
    aem_ReleaseDialoguEnhance(handle);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::silenceEffects();
    ByteStream stream(bytes, size);
    constexpr int kRates_hz[] = {48000, 44100, 16000, 50000, 50001, 100000, 100001, 192000};
    const int kind = stream.byte();
    const int rate_hz = kind == 0xFF ? stream.number() : kRates_hz[kind % 8];
    if (kind >= 0xF0) {
        useHandlesOfItsOwn(stream, rate_hz);
    } else {
        const double voice_level = stream.byte() / 16.0;
        const int hop_frames = hopOf(rate_hz);
        fuzz::makeAemCalls(stream, effectWith(rate_hz, reused(hop_frames, voice_level, 0)),
                           effectWith(rate_hz, reused(hop_frames, voice_level, 1)));
    }
    if (size == 0) aem_ReleaseDialoguEnhance(nullptr);
    return 0;
}
