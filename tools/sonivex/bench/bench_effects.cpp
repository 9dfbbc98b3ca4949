#include "bench_effects.h"

#include "failure.h"
#include "sonivex/dialoguenhance.h"
#include "sonivex/normalizer.h"
#include "sonivex/surround.h"
#include "sonivex/vectors.h"

namespace sonivex_tool {
namespace {

constexpr int kSurroundCallFrames = 480;
constexpr int kOtherCallFrames = 512;
constexpr int k3dSurroundType = 1;
constexpr int kMegaBassType = 13;

// Looks up a function that the plug-in exports. The caller takes only the function's type from the header's
// declaration, so the program does not link against the effects.
template <typename Function>
Function* find(const Vorlin::Plugin& plugin, const char* name) {
    void* const symbol = plugin.symbol(name);
    if (symbol == nullptr)
        throw Failure(ExitCode::EffectMissing, std::string("the plug-in does not export ") + name);
    return reinterpret_cast<Function*>(symbol);
}

struct Parts {
    void* handle;
    void (*release)(void*);
    std::function<int(const short*, short*)> call;
    int channels_out;
};

Parts makeSurround(const Vorlin::Plugin& plugin, const BenchCase& shape) {
    const auto create = find<decltype(aem_CreateSurround)>(plugin, "aem_CreateSurround");
    const auto process = find<decltype(aem_ProcessSurround)>(plugin, "aem_ProcessSurround");
    const auto release = find<decltype(aem_ReleaseSurround)>(plugin, "aem_ReleaseSurround");
    const int type = shape.type == "MegaBass" ? kMegaBassType : k3dSurroundType;
    void* const handle = create(shape.channels, kBenchRateHz, type, /*mode=*/1, /*limiter=*/1);
    const auto call = [process, handle, frames = shape.call_frames](const short* in, short* out) {
        return process(handle, in, out, frames);
    };
    return {handle, release, call, 2};
}

Parts makeDialogue(const Vorlin::Plugin& plugin, const BenchCase& shape) {
    const auto create = find<decltype(aem_CreateDialoguEnhance)>(plugin, "aem_CreateDialoguEnhance");
    const auto process = find<decltype(aem_ProcessDialoguEnhance)>(plugin, "aem_ProcessDialoguEnhance");
    const auto release = find<decltype(aem_ReleaseDialoguEnhance)>(plugin, "aem_ReleaseDialoguEnhance");
    void* const handle = create(shape.channels, kBenchRateHz, /*gainFloor=*/1.0, /*gainScale=*/1.0,
                                /*voiceLevel=*/1.0);
    const auto call = [process, handle, frames = shape.call_frames](const short* in, short* out) {
        return process(handle, in, out, frames, kBenchRateHz);
    };
    return {handle, release, call, 2};
}

Parts makeNormalizer(const Vorlin::Plugin& plugin, const BenchCase& shape) {
    const auto create = find<decltype(aem_CreateNormalizer)>(plugin, "aem_CreateNormalizer");
    const auto process = find<decltype(aem_ProcessNormalizer)>(plugin, "aem_ProcessNormalizer");
    const auto release = find<decltype(aem_ReleaseNormalizer)>(plugin, "aem_ReleaseNormalizer");
    void* const handle = create(shape.channels, kBenchRateHz);
    const auto call = [process, handle, frames = shape.call_frames, channels = shape.channels](
                          const short* in, short* out) { return process(handle, in, out, frames, channels); };
    return {handle, release, call, shape.channels};
}

Parts make(const Vorlin::Plugin& plugin, const BenchCase& shape) {
    if (shape.effect == "surround") return makeSurround(plugin, shape);
    if (shape.effect == "dialogue") return makeDialogue(plugin, shape);
    if (shape.effect == "normalizer") return makeNormalizer(plugin, shape);
    throw Failure(ExitCode::Internal,
                  "unknown effect \"" + shape.effect + "\": use normalizer, surround or dialogue");
}

}  // namespace

std::vector<BenchCase> benchCases(const std::string& effect) {
    std::vector<BenchCase> cases;
    for (const char* const type : {"3DSurround", "MegaBass"}) {
        for (const int channels : {2, 6, 8})
            cases.push_back({"surround", type, channels, kSurroundCallFrames});
    }
    cases.push_back({"dialogue", "", 2, kOtherCallFrames});
    for (const int channels : {1, 2, 6, 8}) cases.push_back({"normalizer", "", channels, kOtherCallFrames});
    if (!effect.empty()) std::erase_if(cases, [&](const BenchCase& shape) { return shape.effect != effect; });
    return cases;
}

BenchEffect::BenchEffect(const Vorlin::Plugin& plugin, const BenchCase& shape)
    : shape_(shape), handle_(nullptr, [](void*) {}) {
    Parts parts = make(plugin, shape);
    if (parts.handle == nullptr)
        throw Failure(ExitCode::FilterFailed,
                      "the plug-in cannot create the effect \"" + shape.effect + "\"");
    handle_ = {parts.handle, parts.release};
    call_ = std::move(parts.call);
    out_samples_ = static_cast<size_t>(shape.call_frames) * static_cast<size_t>(parts.channels_out);
    out_.resize(out_samples_);
}

void BenchEffect::process(const std::vector<int16_t>& in) {
    const size_t call_samples =
        static_cast<size_t>(shape_.call_frames) * static_cast<size_t>(shape_.channels);
    for (size_t first = 0; first + call_samples <= in.size(); first += call_samples) {
        if (call_(in.data() + first, out_.data()) != static_cast<int>(out_samples_))
            throw Failure(ExitCode::FilterFailed,
                          "the effect \"" + shape_.effect + "\" did not return all samples of a call");
    }
}

std::string vectorTargetOf(const Vorlin::Plugin& plugin) {
    void* const symbol = plugin.symbol("aem_VectorTarget");
    if (symbol == nullptr) return {};
    return reinterpret_cast<decltype(aem_VectorTarget)*>(symbol)();
}

}  // namespace sonivex_tool
