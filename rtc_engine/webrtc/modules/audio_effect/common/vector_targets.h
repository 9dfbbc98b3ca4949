// Which vector instructions the kernels are built for. Included before anything of Highway.
//
// Fused multiply-add is kept out where it can be: it rounds once where the bits ask for twice. Vectors whose
// length is known only at run time are left out, since the kernels keep several in arrays.
#ifndef HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_BMI2_FMA
#endif
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
// Where the compiler was told of all that this target needs, Highway 1.0.3 takes it for the baseline and then
// misses it among the targets.
#if defined(__AVX512VPOPCNTDQ__) && defined(__VAES__) && !defined(HWY_WANT_AVX3_DL)
#define HWY_WANT_AVX3_DL
#endif
