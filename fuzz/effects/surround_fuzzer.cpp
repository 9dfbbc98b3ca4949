// Surround through its C functions. The input begins with the settings: channels, type, mode, limiter, and
// whether the handle is made for this input or reused after a reset. Calls follow, see aem_calls.cpp.

#include "sonivex/surround.h"

#include <cstdint>
#include <map>
#include <tuple>
#include <utility>

#include "aem_calls.h"
#include "support/promise.h"
#include "surround_control.h"

namespace {

using fuzz::AemEffect;
using fuzz::ByteStream;
using fuzz::require;

constexpr int kRate_hz = 48000;
constexpr int kMegaBass = 13;
constexpr int kBlockFrames = 240;

struct Settings {
    int channels, type, mode, limiter;
    bool operator<(const Settings& other) const {
        return std::tie(channels, type, mode, limiter) <
               std::tie(other.channels, other.type, other.mode, other.limiter);
    }
};

/** Returns the settings that count: MegaBass has three rooms, 3DSurround none; a limiter is there or not. */
Settings effective(Settings settings) {
    const bool is_first_or_second = settings.mode == 1 || settings.mode == 2;
    settings.mode = settings.type == kMegaBass && is_first_or_second ? settings.mode : 3;
    settings.limiter = settings.limiter == 1 ? 1 : 0;
    return settings;
}

void* make(const Settings& settings) {
    void* const handle =
        aem_CreateSurround(settings.channels, kRate_hz, settings.type, settings.mode, settings.limiter);
    require(handle != nullptr, "supported settings get a handle");
    return handle;
}

/** Returns one of two handles with these settings, as new. Making one takes longer than most inputs. */
void* reused(const Settings& settings, int number) {
    static auto& handles = *new std::map<std::pair<Settings, int>, void*>;
    void*& handle = handles[{settings, number}];
    if (handle == nullptr) {
        handle = make(settings);
    } else {
        sonivex::resetSurround(handle);
    }
    return handle;
}

AemEffect effectWith(const Settings& settings, void* handle) {
    const int width = settings.channels == 1 ? 2 : settings.channels;
    return {.handle = handle,
            .width_in = width,
            .width_out = 2,
            .block_frames = kBlockFrames,
            .refusal = 0,
            .is_limited = settings.limiter == 1,
            .process = aem_ProcessSurround};
}

Settings readSettings(ByteStream& stream) {
    constexpr int kChannels[] = {1, 2, 6, 8};
    constexpr int kTypes[] = {1, kMegaBass};
    Settings settings = {};
    settings.channels = stream.oneOf(kChannels);
    settings.type = stream.oneOf(kTypes);
    settings.mode = static_cast<std::int8_t>(stream.byte());
    settings.limiter = static_cast<std::int8_t>(stream.byte());
    return settings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::silenceEffects();
    ByteStream stream(bytes, size);
    const Settings settings = readSettings(stream);
    const bool is_new = stream.byte() == 0xFF;
    const Settings counted = effective(settings);
    void* const handle = is_new ? make(settings) : reused(counted, 0);
    fuzz::makeAemCalls(stream, effectWith(counted, handle), effectWith(counted, reused(counted, 1)));
    if (is_new) aem_ReleaseSurround(handle);
    if (size == 0) aem_ReleaseSurround(nullptr);
    return 0;
}
