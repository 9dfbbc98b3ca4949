#include "vorlin/sample_format.h"

extern "C" {
#include <libavutil/samplefmt.h>
}

const char* qf_get_sample_fmt_name(int format) {
    if (format < 0 || format >= AV_SAMPLE_FMT_NB) return nullptr;
    return av_get_sample_fmt_name(static_cast<AVSampleFormat>(format));
}
