// The C interface through which a host finds, makes and runs the plug-ins. No exception leaves it.

#include <lv2/core/lv2.h>
#include <lv2/worker/worker.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include "instance.h"
#include "sonivex/status.h"

namespace {

using sonivex_lv2::Engine;
using sonivex_lv2::HostFeatures;
using sonivex_lv2::Instance;
using sonivex_lv2::PluginKind;

constexpr double kHighestRate_hz = 1.0e6;

Instance* instanceOf(LV2_Handle handle) {
    return static_cast<Instance*>(handle);
}

// Returns the rate in whole Hz, or 0, which no effect supports.
int wholeRate_hz(double rate_hz) {
    const bool is_whole = rate_hz > 0.0 && rate_hz <= kHighestRate_hz && rate_hz == std::floor(rate_hz);
    return is_whole ? static_cast<int>(rate_hz) : 0;
}

LV2_Handle instantiate(const LV2_Descriptor* descriptor, double rate_hz, const char* /*bundle_path*/,
                       const LV2_Feature* const* features) {
    const HostFeatures host(features);
    const PluginKind* const kind = sonivex_lv2::findPluginKind(descriptor->URI);
    if (kind == nullptr) return nullptr;
    int status = SONIVEX_ERROR_MEMORY;
    try {
        Engine engine;
        status = makeEngine(*kind, wholeRate_hz(rate_hz), {}, engine);
        if (status == SONIVEX_OK) {
            return new Instance(*kind, wholeRate_hz(rate_hz), host, std::move(engine));
        }
    } catch (const std::bad_alloc&) {
        status = SONIVEX_ERROR_MEMORY;
    }
    host.logError(kind->uri, sonivex_status_text(status));
    return nullptr;
}

void connectPort(LV2_Handle handle, uint32_t port, void* location) {
    instanceOf(handle)->connectPort(port, location);
}

void activate(LV2_Handle handle) {
    instanceOf(handle)->activate();
}

void run(LV2_Handle handle, uint32_t frames) {
    instanceOf(handle)->run(frames);
}

void cleanup(LV2_Handle handle) {
    delete instanceOf(handle);
}

LV2_Worker_Status work(LV2_Handle handle, LV2_Worker_Respond_Function /*respond*/,
                       LV2_Worker_Respond_Handle /*respond_handle*/, uint32_t size, const void* data) {
    return instanceOf(handle)->work(size, data);
}

// The worker leaves its results in the instance, so it sends no responses.
LV2_Worker_Status ignoreResponse(LV2_Handle /*handle*/, uint32_t /*size*/, const void* /*body*/) {
    return LV2_WORKER_SUCCESS;
}

const void* extensionData(const char* uri) {
    static constexpr LV2_Worker_Interface kWorker = {work, ignoreResponse, nullptr};
    return std::strcmp(uri, LV2_WORKER__interface) == 0 ? &kWorker : nullptr;
}

// Only surround makes engines while it runs.
constexpr LV2_Descriptor describe(const PluginKind& kind) {
    const auto extension_data = kind.effect == SONIVEX_SURROUND ? extensionData : nullptr;
    return {kind.uri, instantiate, connectPort, activate, run, nullptr, cleanup, extension_data};
}

// One descriptor for each of kPluginKinds.
constexpr auto kDescriptors = [] {
    std::array<LV2_Descriptor, sonivex_lv2::kPluginKinds.size()> descriptors{};
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        descriptors[i] = describe(sonivex_lv2::kPluginKinds[i]);
    }
    return descriptors;
}();

}  // namespace

const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    for (std::size_t i = 0; i < kDescriptors.size(); ++i) {
        if (sonivex_has_effect(sonivex_lv2::kPluginKinds[i].effect) == 0) continue;
        if (index == 0) return &kDescriptors[i];
        --index;
    }
    return nullptr;
}
