// The filter for a player in C. A library of C++ makes the objects that the filter's interface wants; the
// player loads it at run time.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** A stream of 16-bit stereo at 48 kHz that goes through one filter with the normalizer. Every function
 *  runs on the player's thread. None of them throws. */
typedef struct PlayerGlue {
    /** Makes everything that the player itself needs, and frames. @return 0 or -1. */
    int (*prepare)(const char* plugin);
    /** Makes a filter. @return 0, or -1 without memory. */
    int (*make)(int has_worker);
    /** @return whether there is a filter. */
    int (*isMade)(void);
    /** Initialises the filter, sets its options, makes it valid and reports rates and loads.
     *  @return 0, -1 if there was no memory for the options, or 1 if the filter took a wrong rate or refused
     *  a right one. */
    int (*start)(void);
    /** Pushes the next frame. @return 0, or the error of the filter. */
    int (*push)(void);
    /** Pulls. @return 1 for a whole frame, 0 for none, -1 for one that is damaged. */
    int (*pull)(void);
    /** @return how many frames the filter gave up. */
    int (*lost)(void);
    /** @return how many log lines announced that. */
    int (*announced)(void);
    /** Destroys the filter. */
    void (*end)(void);
} PlayerGlue;

#ifdef __cplusplus
}
#endif
