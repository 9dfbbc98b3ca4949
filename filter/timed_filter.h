#pragma once

#include "vorlin/frame.h"

// A player's own framework may lack the interface by which a player asks how late a filter is. The filter
// then answers nobody, and is otherwise the same.
#if __has_include("vorlin/effect_timing.h")
#include "vorlin/effect_timing.h"
#else
namespace Vorlin {

struct FilterTiming {
    int effect = 0;
    int block_frames = 0;
    int own_delay_frames = 0;
    int tail_frames = 0;
};

class ITimedFilter {
  public:
    virtual ~ITimedFilter() = default;
    virtual FilterTiming timing(const IQFFrame::audioInfo& stream) const = 0;
};

}  // namespace Vorlin
#endif
