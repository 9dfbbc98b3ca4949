#include "vorlin/effect_timing.h"

namespace Vorlin {

ITimedFilter::~ITimedFilter() = default;

}  // namespace Vorlin
