// All layouts: 3DSurround ("Bingo") and MegaBass ("Surround"), each for two channels, 5.1 and 7.1, and the
// Audio stage, which the ear signals of MegaBass pass through.
#pragma once

#include "convolve_reverb.h"
#include "layout.h"
#include "response_formats.h"
#include "table_list.h"

namespace sonivex {

// ---- from source and ear to agent ----

inline constexpr Source kBingo2Sources[] = {{0, 0, 1}, {1, 2, 3}};
inline constexpr Source kBingo51Sources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13},
                                             {3, 14, 15}, {4, 16, 17}, {5, 18, 19}};
inline constexpr Source kBingo71Sources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13}, {3, 14, 15},
                                             {4, 16, 17}, {5, 18, 19}, {6, 20, 21}, {7, 22, 23}};
// Each ear hears only one channel, through two responses: the responses and their tone are made for that.
inline constexpr Source kSurround2Sources[] = {
    {0, 0, kNoAgent}, {1, kNoAgent, 1}, {0, 2, kNoAgent}, {1, kNoAgent, 3}};
// Channel 3, low frequency, is missing: these sets have no response for it.
inline constexpr Source kSurround51Sources[] = {
    {0, 8, 9}, {1, 10, 11}, {2, 12, 13}, {4, 14, 15}, {5, 16, 17}};
inline constexpr Source kSurround71Sources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13}, {4, 14, 15},
                                                {5, 16, 17}, {6, 18, 19}, {7, 20, 21}};
inline constexpr Source kAudioSources[] = {{0, 4, kNoAgent}, {1, kNoAgent, 7}};

// ---- responses ----

#define SONIVEX_ADDRESS(name) &ConvolveReverb::g_##name,
inline constexpr const ResponseTable* kBingo2Tables[] = {SONIVEX_TABLES_BINGO_2(SONIVEX_ADDRESS)};
inline constexpr const ResponseTable* kBingo51Tables[] = {SONIVEX_TABLES_BINGO_5_1(SONIVEX_ADDRESS)};
inline constexpr const ResponseTable* kBingo71Tables[] = {SONIVEX_TABLES_BINGO_7_1(SONIVEX_ADDRESS)};
inline constexpr const ResponseTable* kSurround2Tables[] = {
    SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode1) SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode2)
        SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode3)};
inline constexpr const ResponseTable* kSurround51Tables[] = {
    SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode1) SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode2)
        SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode3)};
inline constexpr const ResponseTable* kSurround71Tables[] = {
    SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode1) SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode2)
        SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode3)};
inline constexpr const ResponseTable* kAudioTables[] = {&ConvolveReverb::g_dolbyL441,
                                                        &ConvolveReverb::g_dolbyR441};
#undef SONIVEX_ADDRESS

// ---- layouts ----

inline constexpr Layout kBingo2{.width = 2,
                                .sources = kBingo2Sources,
                                .tables = kBingo2Tables,
                                .format = kBingo2Format,
                                .log_line = 194,
                                .log_null_handle = "[KelvoSurround]::kv surround handle is NULL.\n"};
inline constexpr Layout kBingo51{.width = 6,
                                 .sources = kBingo51Sources,
                                 .tables = kBingo51Tables,
                                 .format = kBingo51Format,
                                 .log_line = 276};
inline constexpr Layout kBingo71{.width = 8,
                                 .sources = kBingo71Sources,
                                 .tables = kBingo71Tables,
                                 .format = kBingo71Format,
                                 .log_line = 360};
inline constexpr Layout kSurround2{.width = 2,
                                   .sources = kSurround2Sources,
                                   .tables = kSurround2Tables,
                                   .format = kSurroundFormat,
                                   .log_line = 444,
                                   .has_audio_stage = true};
inline constexpr Layout kSurround51{.width = 6,
                                    .sources = kSurround51Sources,
                                    .tables = kSurround51Tables,
                                    .format = kSurroundFormat,
                                    .log_line = 527,
                                    .has_audio_stage = true};
inline constexpr Layout kSurround71{.width = 8,
                                    .sources = kSurround71Sources,
                                    .tables = kSurround71Tables,
                                    .format = kSurroundFormat,
                                    .log_line = 612,
                                    .has_audio_stage = true};
inline constexpr Layout kAudio{
    .width = 2, .sources = kAudioSources, .tables = kAudioTables, .format = kAudioFormat};

}  // namespace sonivex
