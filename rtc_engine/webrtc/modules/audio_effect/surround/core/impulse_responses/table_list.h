// A list of all impulse response tables: sets of table names for macros that take a name without its prefix.
// Each set is in the order of the sources, left ear before right. The two Audio tables have the same data and
// are not in the list; the code names them where it needs them.
//
// Use: #define DECLARE(name) extern const int g_##name;   then   SONIVEX_TABLES_LOUDSPEAKERS(DECLARE)
#pragma once

// NOLINTBEGIN(bugprone-macro-parentheses): the names are pasted, not evaluated

#define SONIVEX_EARS(X, source, set) X(source##_h_##set##L48) X(source##_h_##set##R48)

#define SONIVEX_TWO_SOURCES(X, layout, set) \
    SONIVEX_EARS(X, layout##_1, set)        \
    SONIVEX_EARS(X, layout##_2, set)

#define SONIVEX_FIVE_SOURCES(X, layout, set) \
    SONIVEX_TWO_SOURCES(X, layout, set)      \
    SONIVEX_EARS(X, layout##_3, set)         \
    SONIVEX_EARS(X, layout##_4, set)         \
    SONIVEX_EARS(X, layout##_5, set)

#define SONIVEX_SIX_SOURCES(X, layout, set) \
    SONIVEX_FIVE_SOURCES(X, layout, set)    \
    SONIVEX_EARS(X, layout##_6, set)

#define SONIVEX_SEVEN_SOURCES(X, layout, set) \
    SONIVEX_SIX_SOURCES(X, layout, set)       \
    SONIVEX_EARS(X, layout##_7, set)

#define SONIVEX_EIGHT_SOURCES(X, layout, set) \
    SONIVEX_SEVEN_SOURCES(X, layout, set)     \
    SONIVEX_EARS(X, layout##_8, set)

#define SONIVEX_TABLES_BINGO_2(X) X(cingoLL48) X(cingoLR48) X(cingoRL48) X(cingoRR48)
#define SONIVEX_TABLES_BINGO_5_1(X) SONIVEX_SIX_SOURCES(X, 5_1, c)
#define SONIVEX_TABLES_BINGO_7_1(X) SONIVEX_EIGHT_SOURCES(X, 7_1, c)
#define SONIVEX_TABLES_SURROUND_2(X, mode) SONIVEX_TWO_SOURCES(X, 2, mode)
#define SONIVEX_TABLES_SURROUND_5_1(X, mode) SONIVEX_FIVE_SOURCES(X, 5_1, mode)
#define SONIVEX_TABLES_SURROUND_7_1(X, mode) SONIVEX_SEVEN_SOURCES(X, 7_1, mode)

// All tables except the Audio tables.
#define SONIVEX_TABLES_LOUDSPEAKERS(X)    \
    SONIVEX_TABLES_BINGO_2(X)             \
    SONIVEX_TABLES_BINGO_5_1(X)           \
    SONIVEX_TABLES_BINGO_7_1(X)           \
    SONIVEX_TABLES_SURROUND_2(X, mode1)   \
    SONIVEX_TABLES_SURROUND_2(X, mode2)   \
    SONIVEX_TABLES_SURROUND_2(X, mode3)   \
    SONIVEX_TABLES_SURROUND_5_1(X, mode1) \
    SONIVEX_TABLES_SURROUND_5_1(X, mode2) \
    SONIVEX_TABLES_SURROUND_5_1(X, mode3) \
    SONIVEX_TABLES_SURROUND_7_1(X, mode1) \
    SONIVEX_TABLES_SURROUND_7_1(X, mode2) \
    SONIVEX_TABLES_SURROUND_7_1(X, mode3)

// NOLINTEND(bugprone-macro-parentheses)
