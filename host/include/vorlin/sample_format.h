#pragma once

#include "vorlin/api.h"

/** @return the name of an AVSampleFormat ("s16", "fltp", …), or null if `format` is not one. The text lives
 *  as long as the program. [any, concurrent] real-time safe */
extern "C" VORLIN_API const char* qf_get_sample_fmt_name(int format);
