// The pipelines of the surround effect's six layouts. Each turns one call's input into as many stereo frames.
//
//   in -> inRing -> blocks of 240 frames -> float -> ConvolveReverb -> limiter or clip -> outRing -> out
//
// Two waiting blocks are rendered together, which is faster and gives the same bits.
//
// aem_ProcessSurround calls the pipeline of a handle's layout. The pipelines are exported as C++ functions
// beside it and make the same demands on `in` and `out`.
#pragma once

#include "layout.h"
#include "sonivex/export.h"

namespace sonivex {

/** The pipeline of any layout; the functions below document the rest.
 *  [any] real-time safe, except for the log line of a null handle */
int processSurround(const Layout& layout, void* handle, const short* in, short* out, int frames);

}  // namespace sonivex

/** Renders one call.
 *  @param handle from aem_CreateSurround, for the channels in the name (2: 1 or 2 channels).
 *  @param in     [frames][2], [frames][6] or [frames][8] interleaved signed 16-bit, depending on the name;
 *                only read.
 *  @param out    [frames][2] interleaved signed 16-bit, overwritten; silence as long as less than the whole
 *                call is ready.
 *  @param frames below 1 neither buffer is read or written; blocks that still wait are rendered.
 *  @return `frames`. Returns 0 and touches nothing for a null handle, which is logged. With `frames` above 0
 *          it also returns 0 and touches nothing for null buffers, for a handle made for other channels or
 *          another type, and for a sample count beyond an int.
 *  [any] real-time safe, except for the log line of a null handle */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Bingo_2(void* handle, short* in, short* out, int frames);
/** See ProcessSurround_Kelvo_Bingo_2. [any] real-time safe, except for the log line of a null handle */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Bingo_5_1(void* handle, short* in, short* out, int frames);
/** See ProcessSurround_Kelvo_Bingo_2. [any] real-time safe, except for the log line of a null handle */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Bingo_7_1(void* handle, short* in, short* out, int frames);
/** See ProcessSurround_Kelvo_Bingo_2. [any] real-time safe, except for the log line of a null handle */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Surround_2_To_Nangua(void* handle, short* in, short* out,
                                                               int frames);
/** See ProcessSurround_Kelvo_Bingo_2. [any] real-time safe, except for the log line of a null handle */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Surround_5_1_To_Nangua(void* handle, short* in, short* out,
                                                                 int frames);
/** See ProcessSurround_Kelvo_Bingo_2. [any] real-time safe, except for the log line of a null handle */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Surround_7_1_To_Nangua(void* handle, short* in, short* out,
                                                                 int frames);
