#include "IRAgent.h"

bool IRAgent::init(std::size_t head, std::size_t tail, const float* ir, std::size_t irLen) {
    return convolver.init(head, tail, ir, irLen);
}

void IRAgent::process(const float* in, float* out, int len) {
    convolver.process(in, out, static_cast<std::size_t>(len));
}
