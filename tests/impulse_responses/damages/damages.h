// Defects of responses, each beside the quality row that must detect it.
#pragma once

#include <cstddef>
#include <span>

#include "quality_rows.h"

namespace response_quality {

/** One defect. */
struct Damage {
    const char* name;
    void (*spoil)(Responses&);  // spoils the responses of oneSetOfEachKind()
    Row (*row)(const Responses&);
    bool needs_measured_head = false;
};

/** Defects of direction. */
std::span<const Damage> directionDamages();

/** Defects of the room and of a response's ends. */
std::span<const Damage> roomDamages();

/** Defects of tone and loudness. */
std::span<const Damage> toneDamages();

/** cingo, Bingo 5.1, mode 2 of two channels and mode 3 of 5.1: one set of each kind keeps the tests fast. */
Responses oneSetOfEachKind();

// Places of the sets in oneSetOfEachKind().
inline constexpr std::size_t kCingo = 0;
inline constexpr std::size_t kBingo51 = 1;
inline constexpr std::size_t kMode2OfTwo = 2;
inline constexpr std::size_t kMode3Of51 = 3;

/** Responses of the left front loudspeaker. */
Ears& left(Responses& responses, std::size_t set);

/** Responses of the centre of a set that has one. */
Ears& centre(Responses& responses, std::size_t set);

/** Calls spoil(ears, near ear) for both loudspeakers of the front pair. */
template <typename Spoil>
void spoilFrontPair(Responses& responses, std::size_t set, Spoil spoil) {
    spoil(responses.sets[set].sources[0].ears, 0);
    spoil(responses.sets[set].sources[1].ears, 1);
}

/** Multiplies every sample. */
void scale(Signal& signal, double factor);

/** Moves a signal later, or earlier if samples < 0; what leaves one end comes back at the other. */
void shift(Signal& signal, std::ptrdiff_t samples);

/** Multiplies everything later than from_s after each ear's onset. */
void scaleFrom(Ears& ears, double from_s, double factor);

/** Multiplies an octave of everything behind the direct sound. */
void scaleOctaveOfRoom(Ears& ears, double octave_hz, double factor);

/** One-pole low-pass. */
void dull(Signal& signal);

/** Adds a decay to the response's own; a negative rate makes it longer. */
void decayFaster(Ears& ears, double rate_per_s);

}  // namespace response_quality
