#include "real_transforms.h"

#include <cstddef>

namespace sonivex {
namespace {

constexpr int kIsForward = 0;
constexpr int kIsInverse = 1;

static_assert(sizeof(Bin) == sizeof(AVComplexFloat) && offsetof(Bin, im) == offsetof(AVComplexFloat, im));

bool initTransform(TransformContext& context, av_tx_fn& run, int points, int is_inverse, float scale) {
    AVTXContext* made = nullptr;
    const int result = av_tx_init(&made, &run, AV_TX_FLOAT_RDFT, is_inverse, points, &scale, 0);
    context.reset(made);
    return result >= 0;
}

}  // namespace

bool ForwardTransform::init(int points) {
    return initTransform(context_, run_, points, kIsForward, 1.0F);
}

void ForwardTransform::run(float* frame, Bin* spectrum) const {
    run_(context_.get(), spectrum, frame, sizeof(float));
}

bool InverseTransform::init(int points) {
    return initTransform(context_, run_, points, kIsInverse, static_cast<float>(1.0 / points));
}

void InverseTransform::run(Bin* spectrum, float* frame) const {
    run_(context_.get(), frame, spectrum, sizeof(AVComplexFloat));
}

}  // namespace sonivex
