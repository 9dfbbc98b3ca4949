#pragma once

#include "vorlin/api.h"

/** The name of an AVSampleFormat ("s16", "fltp", …), or null for a number that is none. */
extern "C" VORLIN_API const char* qf_get_sample_fmt_name(int format);
