// Selects the vector instruction sets that the kernels are built for. Include it before every Highway header.
//
// Fused multiply-add is disabled where possible: it rounds once, but the defined output needs two roundings.
// Vectors whose length is known only at run time are disabled, because the kernels keep vectors in arrays.
#ifndef HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_BMI2_FMA
#endif
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
// If compiler options enable everything that AVX3_DL needs, Highway 1.0.3 makes it the baseline but then
// misses it among the targets.
#if defined(__AVX512VPOPCNTDQ__) && defined(__VAES__) && !defined(HWY_WANT_AVX3_DL)
#define HWY_WANT_AVX3_DL
#endif
