// A host of LV2 plug-ins that loads the built bundle's library and does whatever a test asks for, also what a
// kind host would not do.
//
//     test::Lv2Plugin plugin(test::kSurround51);
//     plugin.control(test::kType) = 13;
//     const test::Planes out = plugin.process(in, {512, 1, 8192});
#pragma once

#include <lv2/core/lv2.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "plugins/lv2/lv2_fakes.h"
#include "support/signals/signals.h"

namespace test {

/** Samples of several channels: [channel][frame]. */
using Planes = std::vector<std::vector<float>>;

enum class Lv2Effect { kSurround, kDialogue, kNormalizer };

/** One plug-in as docs/lv2.md lists it. */
struct Lv2Kind {
    const char* uri;
    Lv2Effect effect;
    std::size_t channels_in;
    std::size_t channels_out;
    int latency_frames;
};

inline constexpr Lv2Kind kSurroundStereo = {"urn:sonivex:lv2:surround-stereo", Lv2Effect::kSurround, 2, 2,
                                            240};
inline constexpr Lv2Kind kSurround51 = {"urn:sonivex:lv2:surround-51", Lv2Effect::kSurround, 6, 2, 240};
inline constexpr Lv2Kind kSurround71 = {"urn:sonivex:lv2:surround-71", Lv2Effect::kSurround, 8, 2, 240};
inline constexpr Lv2Kind kDialogue = {"urn:sonivex:lv2:dialogue", Lv2Effect::kDialogue, 2, 2, 2048};
inline constexpr Lv2Kind kNormalizerStereo = {"urn:sonivex:lv2:normalizer-stereo", Lv2Effect::kNormalizer, 2,
                                              2, 512};
inline constexpr Lv2Kind kNormalizer51 = {"urn:sonivex:lv2:normalizer-51", Lv2Effect::kNormalizer, 6, 6, 512};
inline constexpr Lv2Kind kNormalizer71 = {"urn:sonivex:lv2:normalizer-71", Lv2Effect::kNormalizer, 8, 8, 512};
inline constexpr std::array kLv2Kinds = {kSurroundStereo,   kSurround51,   kSurround71,  kDialogue,
                                         kNormalizerStereo, kNormalizer51, kNormalizer71};

/** Controls by their place after the audio ports. */
enum Lv2Control : std::size_t { kBypass = 0, kLatency = 1, kType = 2, kMode = 3, kLimiter = 4, kVoice = 2 };

/** Returns the library's function lv2_descriptor. */
LV2_Descriptor_Function lv2DescriptorFunction();

/** Returns the descriptor with a URI, or null. */
const LV2_Descriptor* findLv2Descriptor(const std::string& uri);

/** One activated instance with all ports connected. */
class Lv2Plugin {
  public:
    /** @param worker the host's worker, or null if it has none. Fails the test if the plug-in refuses. */
    explicit Lv2Plugin(const Lv2Kind& kind, double rate_hz = 48000, FakeLv2Worker* worker = nullptr);
    ~Lv2Plugin();
    Lv2Plugin(const Lv2Plugin&) = delete;
    Lv2Plugin& operator=(const Lv2Plugin&) = delete;

    float& control(Lv2Control control) { return controls_[control]; }
    /** Connects a port by its number. */
    void connect(std::size_t port, void* location);
    /** Connects the control ports to the values of control(). */
    void connectControls();
    std::size_t portOf(Lv2Control control) const { return kind_.channels_in + kind_.channels_out + control; }

    /** Runs `frames` from `first` on; in and out may be the same. */
    void run(const Planes& in, Planes& out, std::size_t first, std::size_t frames);
    /** Runs with the ports as they are connected. */
    void run(std::uint32_t frames) { descriptor_->run(instance_, frames); }

    /** Processes a whole signal in blocks of these lengths, over and over. */
    Planes process(const Planes& in, const std::vector<std::size_t>& blocks = {1024});

    /** Deactivates and activates again. */
    void restart();

  private:
    const Lv2Kind kind_;
    const LV2_Descriptor* descriptor_;
    LV2_Handle instance_ = nullptr;
    std::array<float, 5> controls_{};
};

/** Makes a sound that the effects process without rounding: noise of 16 bits. */
Planes noisePlanes(std::uint64_t seed, std::size_t channels, std::size_t frames, int amplitude = 8000);

/** Makes a sine of 440 Hz at 48 kHz in all channels. */
Planes tonePlanes(std::size_t channels, std::size_t frames, double amplitude);

/** Settings of an effect. */
struct Lv2Settings {
    int type = 1;
    int mode = 1;
    int limiter = 1;
    double voice = 1.0;
    int rate_hz = 48000;
};

/** Returns what the effect's own C functions make of the sound in calls of whole blocks, `delay` frames
 *  later. */
Planes effectOutput(const Lv2Kind& kind, const Lv2Settings& settings, const Planes& in, std::size_t delay);

/** Returns the greatest magnitude of the second difference of any channel, over first..last-1. */
double secondDifference(const Planes& sound, std::size_t first, std::size_t last);

}  // namespace test
