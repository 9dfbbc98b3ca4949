#include "response_tail.h"

namespace sonivex_tool {

int64_t responseTailFrames(const Effect& effect, const FilterOptions& options, int channels) {
    if (effect.name != "surround") return effect.timing.tail_frames;
    return sonivex::surroundTiming(options.surround_type == "MegaBass", channels).tail_frames;
}

}  // namespace sonivex_tool
