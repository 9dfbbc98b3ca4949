#include <utility>

#include "damages.h"
#include "reference_head.h"

namespace response_quality {
namespace {

Row delays(const Responses& responses) {
    return onsetDelays(responses, referenceHead().radius_m);
}
Row delaysAgainstHead(const Responses& responses) {
    return lowFrequencyDelays(responses, *referenceHead().measured);
}
Row levelsAt125AgainstHead(const Responses& responses) {
    return lowLevelRows(responses, *referenceHead().measured)[0];
}
Row levelsAt250AgainstHead(const Responses& responses) {
    return lowLevelRows(responses, *referenceHead().measured)[1];
}
Row levelsAt500AgainstHead(const Responses& responses) {
    return lowLevelRows(responses, *referenceHead().measured)[2];
}
Row octavesOfPairs(const Responses& responses) {
    return wholeLevelRows(responses).octaves;
}
Row octavesOfEach(const Responses& responses) {
    return wholeLevelRows(responses).each;
}
Row speechOfPairs(const Responses& responses) {
    return wholeLevelRows(responses).speech;
}
Row mirroredSpeech(const Responses& responses) {
    return wholeLevelRows(responses).mirrored_speech;
}
Row mirroredOctaves(const Responses& responses) {
    return wholeLevelRows(responses).mirrored_octaves;
}

constexpr Damage kDirectionDamages[] = {
    {"SwappedEarsInTheDelays", [](Responses& r) { std::swap(left(r, kCingo)[0], left(r, kCingo)[1]); },
     delays},
    {"FarEarFourSamplesLate", [](Responses& r) { shift(left(r, kCingo)[1], 4); }, delays},
    {"FarEarFourSamplesEarly", [](Responses& r) { shift(left(r, kCingo)[1], -4); }, delays},
    {"FarEarsTenSamplesLate",
     [](Responses& r) {
         spoilFrontPair(r, kCingo, [](Ears& ears, std::size_t near) { shift(ears[1 - near], 10); });
     },
     delaysAgainstHead, true},
    {"FarEarsLouderAt125Hz",
     [](Responses& r) {
         spoilFrontPair(r, kCingo, [](Ears& ears, std::size_t near) { scale(ears[1 - near], 1.3); });
     },
     levelsAt125AgainstHead, true},
    {"FarEarsLouderAt250Hz",
     [](Responses& r) {
         spoilFrontPair(r, kBingo51, [](Ears& ears, std::size_t near) { scale(ears[1 - near], 1.3); });
     },
     levelsAt250AgainstHead, true},
    {"FarEarsSofterAt500Hz",
     [](Responses& r) {
         spoilFrontPair(r, kMode3Of51, [](Ears& ears, std::size_t near) { scale(ears[1 - near], 0.75); });
     },
     levelsAt500AgainstHead, true},
    {"SwappedEarsInTheTreble", [](Responses& r) { std::swap(left(r, kCingo)[0], left(r, kCingo)[1]); },
     trebleLevelDifferences},
    {"SwappedEarsInTheMidrange", [](Responses& r) { std::swap(left(r, kCingo)[0], left(r, kCingo)[1]); },
     middleLevelDifferences},
    {"CentreOneSampleOffTheMiddle", [](Responses& r) { shift(centre(r, kBingo51)[1], 1); }, centralDelays},
    {"CentreOneDecibelOffTheMiddle", [](Responses& r) { scale(centre(r, kBingo51)[0], 1.12); },
     centralLevelDifferences},
    {"RoomDrownsOneOctave",
     [](Responses& r) {
         spoilFrontPair(r, kBingo51, [](Ears& ears, std::size_t) { scaleOctaveOfRoom(ears, 2000.0, 3.0); });
     },
     octavesOfPairs},
    {"OneLoudspeakerWithEqualEars", [](Responses& r) { left(r, kMode3Of51)[1] = left(r, kMode3Of51)[0]; },
     octavesOfEach},
    {"RoomDrownsSpeech",
     [](Responses& r) {
         spoilFrontPair(r, kMode3Of51, [](Ears& ears, std::size_t) { scaleFrom(ears, 0.0026, 3.0); });
     },
     speechOfPairs},
    {"LeftLoudspeakerFartherToTheSideInSpeech", [](Responses& r) { scale(left(r, kCingo)[0], 1.3); },
     mirroredSpeech},
    {"LeftLoudspeakerFartherToTheSideInAnOctave", [](Responses& r) { scale(left(r, kCingo)[0], 1.6); },
     mirroredOctaves},
};

}  // namespace

std::span<const Damage> directionDamages() {
    return kDirectionDamages;
}

}  // namespace response_quality
