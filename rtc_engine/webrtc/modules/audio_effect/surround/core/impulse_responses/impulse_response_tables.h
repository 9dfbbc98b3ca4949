/* The impulse responses of the surround effect, as compiled in: what each ear hears of each loudspeaker.
 *
 *   k_ + layout + source + _h_ + set + ear + rate
 *
 *   layout: 2, 5_1 or 7_1 loudspeakers
 *
 *   source: from 1: front left, front right, centre, low frequency (Bingo only), then the surround pairs, and
 *   of those a back pair before a side pair
 *
 *   set: c for Bingo, mode1 to mode3
 *
 *   ear: L or R
 *
 *   rate: that the response was made for, 48 kHz or 44.1 kHz (441)
 *
 * One sample is gain * divisor: 10000 for cingo, 20000 for Bingo and the modes, 24000 for Audio. Made by
 * tools/irgen. */
#pragma once

#include <cstdint>

// cingo: two loudspeakers in a listening room. The source is the input channel, L or R.
extern const std::int16_t k_cingoLL48[13000];
extern const std::int16_t k_cingoLR48[13000];
extern const std::int16_t k_cingoRL48[13000];
extern const std::int16_t k_cingoRR48[13000];

// Bingo 5.1: the listening room; source 4 is the low-frequency channel.
extern const std::int16_t k_5_1_1_h_cL48[8544];
extern const std::int16_t k_5_1_1_h_cR48[8544];
extern const std::int16_t k_5_1_2_h_cL48[8544];
extern const std::int16_t k_5_1_2_h_cR48[8544];
extern const std::int16_t k_5_1_3_h_cL48[8544];
extern const std::int16_t k_5_1_3_h_cR48[8544];
extern const std::int16_t k_5_1_4_h_cL48[8544];
extern const std::int16_t k_5_1_4_h_cR48[8544];
extern const std::int16_t k_5_1_5_h_cL48[8544];
extern const std::int16_t k_5_1_5_h_cR48[8544];
extern const std::int16_t k_5_1_6_h_cL48[8544];
extern const std::int16_t k_5_1_6_h_cR48[8544];

// Bingo 7.1: the listening room; source 4 is the low-frequency channel.
extern const std::int16_t k_7_1_1_h_cL48[8640];
extern const std::int16_t k_7_1_1_h_cR48[8640];
extern const std::int16_t k_7_1_2_h_cL48[8640];
extern const std::int16_t k_7_1_2_h_cR48[8640];
extern const std::int16_t k_7_1_3_h_cL48[8640];
extern const std::int16_t k_7_1_3_h_cR48[8640];
extern const std::int16_t k_7_1_4_h_cL48[8640];
extern const std::int16_t k_7_1_4_h_cR48[8640];
extern const std::int16_t k_7_1_5_h_cL48[8640];
extern const std::int16_t k_7_1_5_h_cR48[8640];
extern const std::int16_t k_7_1_6_h_cL48[8640];
extern const std::int16_t k_7_1_6_h_cR48[8640];
extern const std::int16_t k_7_1_7_h_cL48[8640];
extern const std::int16_t k_7_1_7_h_cR48[8640];
extern const std::int16_t k_7_1_8_h_cL48[8640];
extern const std::int16_t k_7_1_8_h_cR48[8640];

// Audio: headphone voicing behind the modes, the same for both ears.
extern const std::int16_t k_dolby441[6000];

// Two channels, mode 1: a small room.
extern const std::int16_t k_2_1_h_mode1L48[7000];
extern const std::int16_t k_2_1_h_mode1R48[7000];
extern const std::int16_t k_2_2_h_mode1L48[7000];
extern const std::int16_t k_2_2_h_mode1R48[7000];

// Two channels, mode 2: a middle room.
extern const std::int16_t k_2_1_h_mode2L48[7000];
extern const std::int16_t k_2_1_h_mode2R48[7000];
extern const std::int16_t k_2_2_h_mode2L48[7000];
extern const std::int16_t k_2_2_h_mode2R48[7000];

// Two channels, mode 3: a large room.
extern const std::int16_t k_2_1_h_mode3L48[7000];
extern const std::int16_t k_2_1_h_mode3R48[7000];
extern const std::int16_t k_2_2_h_mode3L48[7000];
extern const std::int16_t k_2_2_h_mode3R48[7000];

// 5.1, mode 1: a small room; no low-frequency channel.
extern const std::int16_t k_5_1_1_h_mode1L48[7000];
extern const std::int16_t k_5_1_1_h_mode1R48[7000];
extern const std::int16_t k_5_1_2_h_mode1L48[7000];
extern const std::int16_t k_5_1_2_h_mode1R48[7000];
extern const std::int16_t k_5_1_3_h_mode1L48[7000];
extern const std::int16_t k_5_1_3_h_mode1R48[7000];
extern const std::int16_t k_5_1_4_h_mode1L48[7000];
extern const std::int16_t k_5_1_4_h_mode1R48[7000];
extern const std::int16_t k_5_1_5_h_mode1L48[7000];
extern const std::int16_t k_5_1_5_h_mode1R48[7000];

// 5.1, mode 2: a middle room; no low-frequency channel.
extern const std::int16_t k_5_1_1_h_mode2L48[7000];
extern const std::int16_t k_5_1_1_h_mode2R48[7000];
extern const std::int16_t k_5_1_2_h_mode2L48[7000];
extern const std::int16_t k_5_1_2_h_mode2R48[7000];
extern const std::int16_t k_5_1_3_h_mode2L48[7000];
extern const std::int16_t k_5_1_3_h_mode2R48[7000];
extern const std::int16_t k_5_1_4_h_mode2L48[7000];
extern const std::int16_t k_5_1_4_h_mode2R48[7000];
extern const std::int16_t k_5_1_5_h_mode2L48[7000];
extern const std::int16_t k_5_1_5_h_mode2R48[7000];

// 5.1, mode 3: a large room; no low-frequency channel.
extern const std::int16_t k_5_1_1_h_mode3L48[7000];
extern const std::int16_t k_5_1_1_h_mode3R48[7000];
extern const std::int16_t k_5_1_2_h_mode3L48[7000];
extern const std::int16_t k_5_1_2_h_mode3R48[7000];
extern const std::int16_t k_5_1_3_h_mode3L48[7000];
extern const std::int16_t k_5_1_3_h_mode3R48[7000];
extern const std::int16_t k_5_1_4_h_mode3L48[7000];
extern const std::int16_t k_5_1_4_h_mode3R48[7000];
extern const std::int16_t k_5_1_5_h_mode3L48[7000];
extern const std::int16_t k_5_1_5_h_mode3R48[7000];

// 7.1, mode 1: a small room; no low-frequency channel.
extern const std::int16_t k_7_1_1_h_mode1L48[7000];
extern const std::int16_t k_7_1_1_h_mode1R48[7000];
extern const std::int16_t k_7_1_2_h_mode1L48[7000];
extern const std::int16_t k_7_1_2_h_mode1R48[7000];
extern const std::int16_t k_7_1_3_h_mode1L48[7000];
extern const std::int16_t k_7_1_3_h_mode1R48[7000];
extern const std::int16_t k_7_1_4_h_mode1L48[7000];
extern const std::int16_t k_7_1_4_h_mode1R48[7000];
extern const std::int16_t k_7_1_5_h_mode1L48[7000];
extern const std::int16_t k_7_1_5_h_mode1R48[7000];
extern const std::int16_t k_7_1_6_h_mode1L48[7000];
extern const std::int16_t k_7_1_6_h_mode1R48[7000];
extern const std::int16_t k_7_1_7_h_mode1L48[7000];
extern const std::int16_t k_7_1_7_h_mode1R48[7000];

// 7.1, mode 2: a middle room; no low-frequency channel.
extern const std::int16_t k_7_1_1_h_mode2L48[7000];
extern const std::int16_t k_7_1_1_h_mode2R48[7000];
extern const std::int16_t k_7_1_2_h_mode2L48[7000];
extern const std::int16_t k_7_1_2_h_mode2R48[7000];
extern const std::int16_t k_7_1_3_h_mode2L48[7000];
extern const std::int16_t k_7_1_3_h_mode2R48[7000];
extern const std::int16_t k_7_1_4_h_mode2L48[7000];
extern const std::int16_t k_7_1_4_h_mode2R48[7000];
extern const std::int16_t k_7_1_5_h_mode2L48[7000];
extern const std::int16_t k_7_1_5_h_mode2R48[7000];
extern const std::int16_t k_7_1_6_h_mode2L48[7000];
extern const std::int16_t k_7_1_6_h_mode2R48[7000];
extern const std::int16_t k_7_1_7_h_mode2L48[7000];
extern const std::int16_t k_7_1_7_h_mode2R48[7000];

// 7.1, mode 3: a large room; no low-frequency channel.
extern const std::int16_t k_7_1_1_h_mode3L48[7000];
extern const std::int16_t k_7_1_1_h_mode3R48[7000];
extern const std::int16_t k_7_1_2_h_mode3L48[7000];
extern const std::int16_t k_7_1_2_h_mode3R48[7000];
extern const std::int16_t k_7_1_3_h_mode3L48[7000];
extern const std::int16_t k_7_1_3_h_mode3R48[7000];
extern const std::int16_t k_7_1_4_h_mode3L48[7000];
extern const std::int16_t k_7_1_4_h_mode3R48[7000];
extern const std::int16_t k_7_1_5_h_mode3L48[7000];
extern const std::int16_t k_7_1_5_h_mode3R48[7000];
extern const std::int16_t k_7_1_6_h_mode3L48[7000];
extern const std::int16_t k_7_1_6_h_mode3R48[7000];
extern const std::int16_t k_7_1_7_h_mode3L48[7000];
extern const std::int16_t k_7_1_7_h_mode3R48[7000];
