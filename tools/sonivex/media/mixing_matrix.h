#pragma once

#include <vector>

#include "av_objects.h"

namespace sonivex_tool {

// Mixes one loudspeaker layout to another, by the names of the loudspeakers:
//
//   a loudspeaker that both layouts have:   gain 1
//   a loudspeaker that only `from` has:     its sound goes to the nearest loudspeakers of `to`, at equal
//   power:
//                                           one gets gain 1, two get -3 dB each, four get -6 dB each
//   to stereo and mono:                     as ITU-R BS.775 folds down: centre and surrounds at -3 dB, and
//                                           then left and right to mono at -3 dB
//   LFE without a counterpart:              left out, as BS.775 does
//
// Sums are never scaled down, so no layout comes out quieter than another. They may exceed full scale.

/** Returns the gains from each channel of `from` to each channel of `to`.
 *  @param from,to in native order
 *  @return [to][from], row by row, linear */
std::vector<double> mixingMatrix(const AVChannelLayout& from, const AVChannelLayout& to);

/** Returns true if the matrix only moves channels to other places: each channel of `to` gets at most one
 *  channel, and each channel of `from` goes to one place, at gain 1. */
bool onlyMovesChannels(const std::vector<double>& matrix, int from_channels);

}  // namespace sonivex_tool
