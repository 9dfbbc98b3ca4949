// Compiled and dispatched like the kernels, so it names the instruction set that they use.
#define HWY_TARGET_INCLUDE "vector_target.cpp"
#include "compile_for_each_target.h"

#include <cstddef>

#include "sonivex/vectors.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

const char* vectorTarget() {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    return "no vector instructions";
#else
    constexpr std::size_t kDoubles = hwy::HWY_NAMESPACE::MaxLanes(hwy::HWY_NAMESPACE::ScalableTag<double>());
    static_assert(kDoubles == 2 || (HWY_ARCH_X86 && (kDoubles == 4 || kDoubles == 8)));
    if (kDoubles == 8) return "AVX-512, 8 doubles";
    if (kDoubles == 4) return "AVX2, 4 doubles";
    if (HWY_ARCH_X86) return "SSE, 2 doubles";
    if (HWY_ARCH_WASM) return "WebAssembly SIMD, 2 doubles";
    return HWY_ARCH_ARM ? "NEON, 2 doubles" : "2 doubles";
#endif
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {
namespace {
HWY_EXPORT(vectorTarget);

const char* chosenVectorTarget() {
    return HWY_DYNAMIC_DISPATCH(vectorTarget)();
}

}  // namespace
}  // namespace sonivex

const char* aem_VectorTarget(void) {
    return sonivex::chosenVectorTarget();
}
#endif
