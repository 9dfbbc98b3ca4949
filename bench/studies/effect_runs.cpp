#include "effect_runs.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "sonivex/dialoguenhance.h"
#include "sonivex/normalizer.h"
#include "sonivex/surround.h"

namespace study {
namespace {

using test::Pcm;
using Handle = std::unique_ptr<void, void (*)(void*)>;

constexpr std::size_t kSurroundCall_frames = 480;
constexpr std::size_t kHop_frames = 512;  // block of dialogue enhancement and of the normalizer
constexpr std::size_t kDialogueDelay_frames = 3 * kHop_frames;

Handle owned(void* handle, void (*release)(void*), const std::string& effect) {
    if (handle == nullptr) throw std::runtime_error("cannot create " + effect + ": out of memory?");
    return {handle, release};
}

using Call = std::function<void(const short* in, short* out)>;

Pcm runInCalls(Pcm in, std::size_t channels, std::size_t channels_out, std::size_t call_frames,
               const Call& call) {
    const std::size_t in_samples = call_frames * channels;
    const std::size_t calls = (in.size() + in_samples - 1) / in_samples;
    in.resize(calls * in_samples);
    Pcm out(calls * call_frames * channels_out);
    for (std::size_t i = 0; i < calls; ++i) call(&in[i * in_samples], &out[i * call_frames * channels_out]);
    return out;
}

}  // namespace

Pcm surroundOf(const Pcm& in, int channels, const SurroundType& type) {
    const Handle handle = owned(aem_CreateSurround(channels, kRate_hz, type.type, type.mode, 1),
                                aem_ReleaseSurround, "surround");
    return runInCalls(
        in, static_cast<std::size_t>(channels), 2, kSurroundCall_frames, [&](const short* block, short* out) {
            aem_ProcessSurround(handle.get(), block, out, static_cast<int>(kSurroundCall_frames));
        });
}

Pcm dialogueOf(const Pcm& in, double voice_level) {
    const Handle handle = owned(aem_CreateDialoguEnhance(2, kRate_hz, 1, 1, voice_level),
                                aem_ReleaseDialoguEnhance, "dialogue enhancement");
    Pcm out = runInCalls(in, 2, 2, kHop_frames, [&](const short* block, short* rendered) {
        aem_ProcessDialoguEnhance(handle.get(), block, rendered, static_cast<int>(kHop_frames), kRate_hz);
    });
    const std::size_t late = std::min(2 * kDialogueDelay_frames, out.size());
    out.erase(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(late));
    return out;
}

Pcm normalizedOf(const Pcm& in, int channels) {
    const Handle handle =
        owned(aem_CreateNormalizer(channels, kRate_hz), aem_ReleaseNormalizer, "the normalizer");
    const auto width = static_cast<std::size_t>(channels);
    return runInCalls(in, width, width, kHop_frames, [&](const short* block, short* out) {
        aem_ProcessNormalizer(handle.get(), block, out, static_cast<int>(kHop_frames), channels);
    });
}

}  // namespace study
