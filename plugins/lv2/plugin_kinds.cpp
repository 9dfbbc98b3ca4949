#include "plugin_kinds.h"

#include <algorithm>
#include <cstring>

namespace sonivex_lv2 {

const PluginKind* findPluginKind(const char* uri) {
    const auto found = std::find_if(kPluginKinds.begin(), kPluginKinds.end(), [uri](const PluginKind& kind) {
        return std::strcmp(kind.uri, uri) == 0;
    });
    return found == kPluginKinds.end() ? nullptr : &*found;
}

void connect(const PluginKind& kind, std::uint32_t port, void* location, Ports& ports) {
    const auto inputs = static_cast<std::uint32_t>(kind.channels_in);
    const auto outputs = static_cast<std::uint32_t>(kind.channels_out);
    auto* const samples = static_cast<float*>(location);
    if (port < inputs) {
        ports.in[port] = samples;
        return;
    }
    port -= inputs;
    if (port < outputs) {
        ports.out[port] = samples;
        return;
    }
    port -= outputs;
    if (port == 0) {
        ports.bypass = samples;
    } else if (port == 1) {
        ports.latency = samples;
    } else if (port - 2 < ports.controls.size()) {
        ports.controls[port - 2] = samples;
    }
}

}  // namespace sonivex_lv2
