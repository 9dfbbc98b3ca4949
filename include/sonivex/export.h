/* Linkage and visibility of the public C functions and variables. */
#ifndef SONIVEX_EXPORT_H
#define SONIVEX_EXPORT_H

/** Gives a declaration C linkage. A variable declared with it is not defined, in C++ as in C. */
#ifdef __cplusplus
#define SONIVEX_EXTERN_C extern "C"
#else
#define SONIVEX_EXTERN_C extern
#endif

/** SONIVEX_VISIBLE exports a symbol from a shared library. SONIVEX_PRINTF_FORMAT lets the compiler check the
 *  arguments against the format; both indices count from 1. */
#if defined(__GNUC__) || defined(__clang__)
#define SONIVEX_VISIBLE __attribute__((visibility("default")))
#define SONIVEX_PRINTF_FORMAT(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))
#else
#define SONIVEX_VISIBLE
#define SONIVEX_PRINTF_FORMAT(format_index, first_argument)
#endif

/** Marks a function that a player, a program that hosts the effects or a language binding may call. */
#define SONIVEX_API SONIVEX_EXTERN_C SONIVEX_VISIBLE
/** Marks a variable that an embedding program may set. */
#define SONIVEX_API_VARIABLE SONIVEX_EXTERN_C SONIVEX_VISIBLE

#endif /* SONIVEX_EXPORT_H */
