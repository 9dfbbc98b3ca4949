#include "mixing_matrix.h"

#include <algorithm>
#include <map>

namespace sonivex_tool {
namespace {

struct Share {
    AVChannel loudspeaker;
    double gain;
};
using Shares = std::vector<Share>;

constexpr double kFull = 1.0;
constexpr double kHalfPower = 0.70710678118654752440;
constexpr double kQuarterPower = 0.5;
// Cosine and sine of 22.5 degrees: equal-power gains of a sound halfway between left and the middle of a
// stereo pair.
constexpr double kNear = 0.92387953251128675613;
constexpr double kFar = 0.38268343236508977173;

constexpr AVChannel kFL = AV_CHAN_FRONT_LEFT;
constexpr AVChannel kFR = AV_CHAN_FRONT_RIGHT;
constexpr AVChannel kFC = AV_CHAN_FRONT_CENTER;
constexpr AVChannel kFLC = AV_CHAN_FRONT_LEFT_OF_CENTER;
constexpr AVChannel kFRC = AV_CHAN_FRONT_RIGHT_OF_CENTER;
constexpr AVChannel kSL = AV_CHAN_SIDE_LEFT;
constexpr AVChannel kSR = AV_CHAN_SIDE_RIGHT;
constexpr AVChannel kBL = AV_CHAN_BACK_LEFT;
constexpr AVChannel kBR = AV_CHAN_BACK_RIGHT;
constexpr AVChannel kBC = AV_CHAN_BACK_CENTER;

// Alternatives for the sound of a loudspeaker that is missing, the best first. Each table ends with what
// BS.775 does for stereo and for mono. Channels on the right mirror those on the left.
const Shares kToFrontMono = {{kFC, kHalfPower}};
const Shares kSurroundToMono = {{kFC, kQuarterPower}};
const Shares kSurroundToStereo = {{kFL, kHalfPower}};
const std::vector<Shares> kCentre = {
    {{kFC, kFull}}, {{kFLC, kHalfPower}, {kFRC, kHalfPower}}, {{kFL, kHalfPower}, {kFR, kHalfPower}}};
const std::vector<Shares> kLeft = {{{kFL, kFull}}, kToFrontMono};
const std::vector<Shares> kSideLeft = {
    {{kSL, kFull}}, {{kBL, kFull}}, {{kBC, kFull}}, kSurroundToStereo, kSurroundToMono};
const std::vector<Shares> kBackLeft = {
    {{kBL, kFull}}, {{kSL, kFull}}, {{kBC, kFull}}, kSurroundToStereo, kSurroundToMono};
const std::vector<Shares> kBackCentre = {{{kBC, kFull}},
                                         {{kBL, kHalfPower}, {kBR, kHalfPower}},
                                         {{kSL, kHalfPower}, {kSR, kHalfPower}},
                                         {{kFL, kQuarterPower}, {kFR, kQuarterPower}},
                                         {{kFC, kHalfPower}}};
const std::vector<Shares> kOverhead = {
    {{kFL, kQuarterPower}, {kFR, kQuarterPower}, {kBL, kQuarterPower}, {kBR, kQuarterPower}},
    {{kFL, kQuarterPower}, {kFR, kQuarterPower}, {kSL, kQuarterPower}, {kSR, kQuarterPower}},
    {{kFL, kQuarterPower}, {kFR, kQuarterPower}},
    {{kFC, kHalfPower}}};

const std::map<AVChannel, std::vector<Shares>> kSubstitutes = {
    {kFC, kCentre},
    {AV_CHAN_TOP_FRONT_CENTER, kCentre},
    {AV_CHAN_BOTTOM_FRONT_CENTER, kCentre},
    {kFL, kLeft},
    {AV_CHAN_TOP_FRONT_LEFT, kLeft},
    {AV_CHAN_BOTTOM_FRONT_LEFT, kLeft},
    {kFLC, {{{kFL, kHalfPower}, {kFC, kHalfPower}}, {{kFL, kNear}, {kFR, kFar}}, {{kFC, kNear}}}},
    {AV_CHAN_WIDE_LEFT,
     {{{kFL, kHalfPower}, {kSL, kHalfPower}},
      {{kFL, kHalfPower}, {kBL, kHalfPower}},
      {{kFL, kFull}},
      kToFrontMono}},
    {kSL, kSideLeft},
    {AV_CHAN_TOP_SIDE_LEFT, kSideLeft},
    {AV_CHAN_SURROUND_DIRECT_LEFT, kSideLeft},
    {kBL, kBackLeft},
    {AV_CHAN_TOP_BACK_LEFT, kBackLeft},
    {kBC, kBackCentre},
    {AV_CHAN_TOP_BACK_CENTER, kBackCentre},
    {AV_CHAN_TOP_CENTER, kOverhead},
    {AV_CHAN_LOW_FREQUENCY, {{{AV_CHAN_LOW_FREQUENCY_2, kFull}}}},
    {AV_CHAN_LOW_FREQUENCY_2, {{{AV_CHAN_LOW_FREQUENCY, kFull}}}},
};

// Loudspeakers on the left and their counterparts on the right.
const std::map<AVChannel, AVChannel> kRightToLeft = {
    {kFR, kFL},
    {kFRC, kFLC},
    {kSR, kSL},
    {kBR, kBL},
    {AV_CHAN_TOP_FRONT_RIGHT, AV_CHAN_TOP_FRONT_LEFT},
    {AV_CHAN_TOP_BACK_RIGHT, AV_CHAN_TOP_BACK_LEFT},
    {AV_CHAN_TOP_SIDE_RIGHT, AV_CHAN_TOP_SIDE_LEFT},
    {AV_CHAN_WIDE_RIGHT, AV_CHAN_WIDE_LEFT},
    {AV_CHAN_SURROUND_DIRECT_RIGHT, AV_CHAN_SURROUND_DIRECT_LEFT},
    {AV_CHAN_BOTTOM_FRONT_RIGHT, AV_CHAN_BOTTOM_FRONT_LEFT},
};

AVChannel mirrored(AVChannel channel) {
    for (const auto& [right, left] : kRightToLeft) {
        if (channel == right) return left;
        if (channel == left) return right;
    }
    return channel;
}

// Both channels of a stereo downmix are the left and the right loudspeaker.
AVChannel loudspeaker(const AVChannelLayout& layout, int index) {
    const AVChannel channel = av_channel_layout_channel_from_index(&layout, static_cast<unsigned>(index));
    if (channel == AV_CHAN_STEREO_LEFT) return kFL;
    if (channel == AV_CHAN_STEREO_RIGHT) return kFR;
    return channel;
}

std::vector<AVChannel> loudspeakers(const AVChannelLayout& layout) {
    std::vector<AVChannel> channels(static_cast<size_t>(layout.nb_channels));
    for (int i = 0; i < layout.nb_channels; ++i) channels[static_cast<size_t>(i)] = loudspeaker(layout, i);
    return channels;
}

// Returns where the sound of `source` goes: the first alternative whose loudspeakers all exist; nowhere if
// there is none.
Shares sharesOf(AVChannel source, const std::vector<AVChannel>& present) {
    const auto exists = [&](AVChannel c) {
        return std::find(present.begin(), present.end(), c) != present.end();
    };
    if (exists(source)) return {{source, kFull}};
    const bool is_right = kRightToLeft.contains(source);
    const auto entry = kSubstitutes.find(is_right ? mirrored(source) : source);
    if (entry == kSubstitutes.end()) return {};
    for (Shares shares : entry->second) {
        if (is_right) {
            for (Share& share : shares) share.loudspeaker = mirrored(share.loudspeaker);
        }
        if (std::all_of(shares.begin(), shares.end(), [&](const Share& s) { return exists(s.loudspeaker); }))
            return shares;
    }
    return {};
}

}  // namespace

std::vector<double> mixingMatrix(const AVChannelLayout& from, const AVChannelLayout& to) {
    const std::vector<AVChannel> sources = loudspeakers(from);
    const std::vector<AVChannel> targets = loudspeakers(to);
    std::vector<double> matrix(sources.size() * targets.size(), 0.0);
    for (size_t i = 0; i < sources.size(); ++i) {
        for (const Share& share : sharesOf(sources[i], targets)) {
            const auto place = std::find(targets.begin(), targets.end(), share.loudspeaker) - targets.begin();
            matrix[static_cast<size_t>(place) * sources.size() + i] = share.gain;
        }
    }
    return matrix;
}

bool onlyMovesChannels(const std::vector<double>& matrix, int from_channels) {
    const auto columns = static_cast<size_t>(from_channels);
    const size_t rows = matrix.size() / columns;
    std::vector<int> uses(columns, 0);
    for (size_t row = 0; row < rows; ++row) {
        int sources = 0;
        for (size_t column = 0; column < columns; ++column) {
            const double gain = matrix[row * columns + column];
            if (gain == 0.0) continue;
            if (gain != kFull) return false;
            ++sources;
            ++uses[column];
        }
        if (sources > 1) return false;
    }
    return std::all_of(uses.begin(), uses.end(), [](int count) { return count == 1; });
}

}  // namespace sonivex_tool
