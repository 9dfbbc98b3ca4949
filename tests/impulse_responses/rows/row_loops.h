// Loops over the sources and the pairs of all sets, which make the figures of a row.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include "response_sets.h"
#include "row.h"

namespace response_quality {

/** Ends of figures' names. */
inline constexpr std::array kEarNames{" left ear", " right ear"};

/** Makes a row of figure(set, source) for each source of which accepts(set, source) is true. */
template <typename Accepts, typename MakeFigure>
Row overSources(const Responses& responses, std::string measure, std::string unit, Accepts accepts,
                MakeFigure figure) {
    Row row{std::move(measure), std::move(unit), {}};
    for (const ResponseSet& set : responses.sets) {
        for (const Source& source : set.sources) {
            if (accepts(set, source)) row.figures.push_back(figure(set, source));
        }
    }
    return row;
}

/** Name of a pair, after its loudspeaker on the left. */
inline std::string pairName(const ResponseSet& set, const Source& left) {
    return set.name + " pair at " + std::to_string(std::lround(left.azimuth_deg)) + " deg";
}

/** Calls add(row, set, left source, right source, name) for each mirrored pair of the sets of which
 *  accepts(set) is true. */
template <typename Accepts, typename Add>
Row overPairs(const Responses& responses, std::string measure, std::string unit, Accepts accepts, Add add) {
    Row row{std::move(measure), std::move(unit), {}};
    for (const ResponseSet& set : responses.sets) {
        if (!accepts(set)) continue;
        for (const auto& [left, right] : mirrorPairs(set)) {
            const Source& source = set.sources[left];
            add(row, set, source, set.sources[right], pairName(set, source));
        }
    }
    return row;
}

/** Accepts every source. */
inline bool anySource(const ResponseSet& /*set*/, const Source& /*source*/) {
    return true;
}

/** Accepts every set. */
inline bool anySet(const ResponseSet& /*set*/) {
    return true;
}

/** Accepts the sets whose loudspeakers are heard by both ears. */
inline bool reachesBothEars(const ResponseSet& set) {
    return !feedsEachEarItsOwnChannel(set);
}

/** Accepts the sources at the side. */
inline bool isAtTheSide(const ResponseSet& /*set*/, const Source& source) {
    return !isCentral(source);
}

/** True for the centre of a mode, which is equal in both ears by design. Rows on differences between the ears
 *  leave it out. */
inline bool hasEqualEars(const ResponseSet& set, const Source& source) {
    return set.kind == Kind::kMode && source.role == Role::kCentre;
}

/** Accepts the sources in the middle whose ears differ. */
inline bool isInTheMiddle(const ResponseSet& set, const Source& source) {
    return isCentral(source) && !hasEqualEars(set, source);
}

/** Accepts the sources at the side of the sets whose loudspeakers are heard by both ears. */
inline bool reachesBothEarsFromTheSide(const ResponseSet& set, const Source& source) {
    return reachesBothEars(set) && !isCentral(source);
}

/** Sign that turns a left-over-right difference into a near-over-far one. */
inline double nearSign(const Source& source) {
    return source.azimuth_deg > 0.0 ? 1.0 : -1.0;
}

/** Index of a loudspeaker's place at the side: 0 to 3 for 30, 90, 110 and 140 degrees, on either side. */
inline std::size_t placeAtTheSide(const Source& source) {
    switch (std::lround(std::abs(source.azimuth_deg))) {
        case 30:
            return 0;
        case 90:
            return 1;
        case 110:
            return 2;
        default:
            return 3;  // 140
    }
}

}  // namespace response_quality
