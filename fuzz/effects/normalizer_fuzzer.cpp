// The normalizer through its C functions. The input begins with the channel count and whether the handle is
// made for this input or reused after a reset. Calls follow, see aem_calls.cpp.

#include "sonivex/normalizer.h"

#include <cstdint>

#include "aem_calls.h"
#include "normalizer_control.h"
#include "support/guarded_samples.h"
#include "support/promise.h"

namespace {

using fuzz::AemEffect;
using fuzz::ByteStream;
using fuzz::require;

constexpr int kMostChannels = 20;
constexpr int kBlockFrames = 512;

/** Returns one of two handles, as new. They work in memory of their own, unlike those of
 *  aem_CreateNormalizer. */
void* reused(int number) {
    static void* handles[2] = {};
    if (handles[number] == nullptr) {
        handles[number] = sonivex::createNormalizer(2, 48000);
        require(handles[number] != nullptr, "a normalizer is made");
    } else {
        sonivex::resetNormalizer(handles[number]);
    }
    return handles[number];
}

AemEffect effectWith(int channels, void* handle) {
    return {.handle = handle,
            .width_in = channels,
            .width_out = channels,
            .block_frames = kBlockFrames,
            .process = [channels](void* used, const std::int16_t* in, std::int16_t* out, int frames) {
                return aem_ProcessNormalizer(used, in, out, frames, channels);
            }};
}

/** Calls with a channel count that the effect does not take. */
void requireRefusal(ByteStream& stream, void* handle) {
    const int channels = stream.flag() ? stream.inRange(-300, 0) : stream.inRange(kMostChannels + 1, 4000);
    const std::int16_t in[16] = {};
    fuzz::GuardedSamples<std::int16_t> out(16, 0x1234);
    require(aem_ProcessNormalizer(handle, in, out.data(), 7, channels) == 7 * channels,
            "the product is returned");
    out.requireUntouched();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::silenceEffects();
    ByteStream stream(bytes, size);
    const int channels = stream.inRange(1, kMostChannels);
    const int kind = stream.byte();
    const bool is_new = kind >= 0xF0;
    void* handle = reused(0);
    if (is_new) {
        // Compilers evaluate the arguments of one call in different orders.
        const int first = stream.number();
        const int second = stream.number();
        handle = aem_CreateNormalizer(first, second);
    }
    require(handle != nullptr, "a normalizer is made");
    if ((kind & 1) != 0) requireRefusal(stream, handle);
    fuzz::makeAemCalls(stream, effectWith(channels, handle), effectWith(channels, reused(1)));
    if (is_new) aem_ReleaseNormalizer(handle);
    if (size == 0) aem_ReleaseNormalizer(nullptr);
    return 0;
}
