#include "response_tail.h"

namespace sonivex_tool {
namespace {

// Lengths of the response tables in frames. They are part of the effect's interface.
constexpr int64_t kStereoFrames = 13000;
constexpr int64_t kFiveOneFrames = 8544;
constexpr int64_t kSevenOneFrames = 8640;
// MegaBass convolves with a loudspeaker's response, then with that of the headphone stage. The cascade is one
// frame shorter than both lengths together.
constexpr int64_t kLoudspeakerFrames = 7000;
constexpr int64_t kHeadphoneFrames = 6000;

}  // namespace

int64_t responseTailFrames(const Effect& effect, const FilterOptions& options, int channels) {
    if (effect.name != "surround") return 0;
    if (options.surround_type == "MegaBass") return kLoudspeakerFrames + kHeadphoneFrames - 1;
    if (channels == 8) return kSevenOneFrames;
    if (channels == 6) return kFiveOneFrames;
    return kStereoFrames;
}

}  // namespace sonivex_tool
