#include "layout_choice.h"

#include <algorithm>

#include "vorlin/av_compat.h"

namespace sonivex_tool {
namespace {

constexpr int kMono = 1;
constexpr int kStereo = 2;
constexpr int kFivePointOne = 6;
constexpr int kSevenPointOne = 8;

bool contains(const std::vector<int>& numbers, int number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool chainTakes(const std::vector<const Effect*>& chain, int channels) {
    for (const Effect* effect : chain) {
        if (!contains(effect->channels, channels)) return false;
        channels = effect->output_channels.value_or(channels);
    }
    return true;
}

// Returns true if some loudspeakers are beside the listener and some behind, as 7.1 has them and 5.1 does
// not.
bool hasSideAndBack(const AVChannelLayout& layout) {
    const uint64_t mask = Vorlin::av::layoutMask(layout);
    return (mask & (AV_CH_SIDE_LEFT | AV_CH_SIDE_RIGHT)) != 0 &&
           (mask & (AV_CH_BACK_LEFT | AV_CH_BACK_RIGHT | AV_CH_BACK_CENTER)) != 0;
}

// Returns the channel count of the layout that suits `input` best, without regard to the chain.
int suitableChannels(const AVChannelLayout& input) {
    if (input.nb_channels <= kStereo) return input.nb_channels;
    return input.nb_channels > kFivePointOne || hasSideAndBack(input) ? kSevenPointOne : kFivePointOne;
}

}  // namespace

std::vector<int> channelsOfChain(const std::vector<const Effect*>& chain) {
    std::vector<int> counts = chain.front()->channels;
    std::erase_if(counts, [&](int channels) { return !chainTakes(chain, channels); });
    std::sort(counts.begin(), counts.end());
    return counts;
}

bool keepsChannels(const std::vector<const Effect*>& chain) {
    return std::none_of(chain.begin(), chain.end(),
                        [](const Effect* effect) { return effect->output_channels; });
}

std::optional<LayoutChoice> chooseLayout(const AVChannelLayout& input,
                                         const std::vector<const Effect*>& chain) {
    const std::vector<int> counts = channelsOfChain(chain);
    if (counts.empty()) return std::nullopt;
    if (keepsChannels(chain) && (input.nb_channels > kStereo || contains(counts, input.nb_channels))) {
        const auto room = std::lower_bound(counts.begin(), counts.end(), input.nb_channels);
        if (room != counts.end())
            return LayoutChoice{input, *room == input.nb_channels ? input : defaultLayout(*room)};
    }
    if (Vorlin::av::layoutMask(input) == 0) return std::nullopt;
    for (const int channels : {suitableChannels(input), kSevenPointOne, kFivePointOne, kStereo, kMono}) {
        if (!contains(counts, channels)) continue;
        const AVChannelLayout layout = defaultLayout(channels);
        return LayoutChoice{layout, layout};
    }
    return std::nullopt;
}

}  // namespace sonivex_tool
