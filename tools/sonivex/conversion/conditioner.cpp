#include "conditioner.h"

namespace sonivex_tool {

Conditioner::Conditioner(const AudioSpec& /*input*/, const ConversionPlan& plan, bool /*dither*/)
    : converter_(plan.work) {}

FramePtr Conditioner::convert(FramePtr frame) {
    return converter_.convert(std::move(frame));
}

FramePtr Conditioner::flush() {
    return converter_.flush();
}

}  // namespace sonivex_tool
