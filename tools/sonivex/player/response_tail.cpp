#include "response_tail.h"

#include "response_formats.h"

namespace sonivex_tool {
namespace {

int64_t tableFrames(const sonivex::ResponseFormat& format) {
    return static_cast<int64_t>(format.samples);
}

}  // namespace

int64_t responseTailFrames(const Effect& effect, const FilterOptions& options, int channels) {
    if (effect.name != "surround") return 0;
    if (options.surround_type == "MegaBass") {
        // MegaBass convolves with a loudspeaker's response, then with that of the Audio stage. The cascade is
        // one frame shorter than both lengths together.
        return tableFrames(sonivex::kSurroundFormat) + tableFrames(sonivex::kAudioFormat) - 1;
    }
    if (channels == 8) return tableFrames(sonivex::kBingo71Format);
    if (channels == 6) return tableFrames(sonivex::kBingo51Format);
    return tableFrames(sonivex::kBingo2Format);
}

}  // namespace sonivex_tool
