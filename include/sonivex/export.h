/* Linkage and visibility of the public C functions. */
#ifndef SONIVEX_EXPORT_H
#define SONIVEX_EXPORT_H

#ifdef __cplusplus
#define SONIVEX_EXTERN_C extern "C" /* makes a variable behind it a declaration, as extern does in C */
#else
#define SONIVEX_EXTERN_C extern
#endif

#if defined(__GNUC__) || defined(__clang__)
#define SONIVEX_VISIBLE __attribute__((visibility("default")))
#define SONIVEX_PRINTF_FORMAT(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))
#else
#define SONIVEX_VISIBLE
#define SONIVEX_PRINTF_FORMAT(format_index, first_argument)
#endif

/* A function that a player, a host of the engines or a language binding may call. */
#define SONIVEX_API SONIVEX_EXTERN_C SONIVEX_VISIBLE
/* A variable that an embedding program may set. */
#define SONIVEX_API_VARIABLE SONIVEX_EXTERN_C SONIVEX_VISIBLE

#endif /* SONIVEX_EXPORT_H */
