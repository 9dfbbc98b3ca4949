// The six layouts of the surround effect, each from one call's input to the same number of stereo frames.
//
//   in -> inRing -> blocks of 240 frames -> float -> ConvolveReverb -> limiter or clip -> outRing -> out
//
// Of the blocks that wait two are rendered together, which is quicker and gives the same bits.
//
// aem_ProcessSurround calls the one that a handle is made for; they are exported as C++ functions beside it.
// Of `in` and `out` they ask what aem_ProcessSurround asks. Real-time safe but for the log line.
#pragma once

#include "layout.h"
#include "sonivex/export.h"

namespace sonivex {

/** All six, by the record of a layout. */
int processSurround(const Layout& layout, void* handle, const short* in, short* out, int frames);

}  // namespace sonivex

/** @param handle as aem_CreateSurround returned it, for the channels in the name (2: 1 or 2 channels).
 *  @param in     [frames][2], [frames][6] or [frames][8] by the name; only read.
 *  @param out    [frames][2]; silence as long as less than the whole call is ready.
 *  @param frames below 1 neither buffer is looked at; blocks that still wait are rendered.
 *  @return frames; 0, with nothing touched, for a null handle (logged), and with frames above 0 for null
 * buffers, a handle made for other channels or another type, or a sample count beyond an int. */
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Bingo_2(void* handle, short* in, short* out, int frames);
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Bingo_5_1(void* handle, short* in, short* out, int frames);
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Bingo_7_1(void* handle, short* in, short* out, int frames);
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Surround_2_To_Nangua(void* handle, short* in, short* out,
                                                               int frames);
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Surround_5_1_To_Nangua(void* handle, short* in, short* out,
                                                                 int frames);
SONIVEX_VISIBLE int ProcessSurround_Kelvo_Surround_7_1_To_Nangua(void* handle, short* in, short* out,
                                                                 int frames);
