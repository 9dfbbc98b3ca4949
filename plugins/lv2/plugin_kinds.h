// The plug-ins of the bundle: each is one effect for one number of channels. The bundle's Turtle files
// describe the same plug-ins and ports to hosts.
//
//   port                                       index
//   audio inputs, in the effect's order        0 ..
//   audio outputs                              channels_in ..
//   bypass                                     channels_in + channels_out
//   latency                                    the next
//   type, mode, limiter (surround)             the next three
//   voice (dialogue)                           the next
#pragma once

#include <array>
#include <cstdint>

#include "sonivex/effect.h"

namespace sonivex_lv2 {

inline constexpr int kMostChannels = 8;
inline constexpr int kMostControls = 3;

/** One plug-in. */
struct PluginKind {
    const char* uri;
    int effect;  // SonivexEffectKind
    int channels_in;
    int channels_out;
};

/** The locations that the host connects, in the roles of the ports. Each may be null. */
struct Ports {
    std::array<const float*, kMostChannels> in{};
    std::array<float*, kMostChannels> out{};
    const float* bypass = nullptr;
    float* latency = nullptr;
    std::array<const float*, kMostControls> controls{};  // surround: type, mode, limiter; dialogue: voice
};

/** All plug-ins, also those whose effect this build lacks. */
inline constexpr std::array<PluginKind, 7> kPluginKinds = {{
    {"urn:sonivex:lv2:surround-stereo", SONIVEX_SURROUND, 2, 2},
    {"urn:sonivex:lv2:surround-51", SONIVEX_SURROUND, 6, 2},
    {"urn:sonivex:lv2:surround-71", SONIVEX_SURROUND, 8, 2},
    {"urn:sonivex:lv2:dialogue", SONIVEX_DIALOGUE, 2, 2},
    {"urn:sonivex:lv2:normalizer-stereo", SONIVEX_NORMALIZER, 2, 2},
    {"urn:sonivex:lv2:normalizer-51", SONIVEX_NORMALIZER, 6, 6},
    {"urn:sonivex:lv2:normalizer-71", SONIVEX_NORMALIZER, 8, 8},
}};

/** @return the plug-in with this URI, or null. [any, concurrent] real-time safe */
const PluginKind* findPluginKind(const char* uri);

/** Connects a port. A port that the plug-in does not have is ignored. [any] real-time safe */
void connect(const PluginKind& kind, std::uint32_t port, void* location, Ports& ports);

}  // namespace sonivex_lv2
