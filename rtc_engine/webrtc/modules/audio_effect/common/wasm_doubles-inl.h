// Arithmetic on two doubles for WebAssembly. Highway 1.0.3 has the type there, and moves its lanes, but does
// not calculate with it. Every operation rounds as the scalar one does.
// Use: compile_for_each_target.h includes this file.
//
// All functions: [any, concurrent] real-time safe.

// The toggle lets the next instruction set include the file again.
#if defined(SONIVEX_WASM_DOUBLES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef SONIVEX_WASM_DOUBLES_INL_H
#undef SONIVEX_WASM_DOUBLES_INL_H
#else
#define SONIVEX_WASM_DOUBLES_INL_H
#endif

#include <hwy/highway.h>

#if HWY_TARGET == HWY_WASM && !HWY_HAVE_FLOAT64
#include <wasm_simd128.h>

#include <cstddef>

// The operators must be in Highway's namespace: its functions Add, Sub and Mul find them by their operands.
HWY_BEFORE_NAMESPACE();
namespace hwy::HWY_NAMESPACE {

/** `value` in all lanes. */
template <std::size_t N, HWY_IF_LE128(double, N)>
HWY_API Vec128<double, N> Set(Simd<double, N, 0> /* tag */, double value) {
    return {wasm_f64x2_splat(value)};
}

/** a + b */
template <std::size_t N>
HWY_API Vec128<double, N> operator+(Vec128<double, N> a, Vec128<double, N> b) {
    return {wasm_f64x2_add(a.raw, b.raw)};
}

/** a - b */
template <std::size_t N>
HWY_API Vec128<double, N> operator-(Vec128<double, N> a, Vec128<double, N> b) {
    return {wasm_f64x2_sub(a.raw, b.raw)};
}

/** a * b */
template <std::size_t N>
HWY_API Vec128<double, N> operator*(Vec128<double, N> a, Vec128<double, N> b) {
    return {wasm_f64x2_mul(a.raw, b.raw)};
}

/** Floats as doubles. */
template <std::size_t N, HWY_IF_LE128(double, N)>
HWY_API Vec128<double, N> PromoteTo(Simd<double, N, 0> /* tag */, Vec128<float, N> a) {
    return {wasm_f64x2_promote_low_f32x4(a.raw)};
}

/** Doubles rounded to float. */
template <std::size_t N, HWY_IF_LE128(double, N)>
HWY_API Vec128<float, N> DemoteTo(Simd<float, N, 0> /* tag */, Vec128<double, N> a) {
    return {static_cast<__f32x4>(wasm_f32x4_demote_f64x2_zero(a.raw))};
}

}  // namespace hwy::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#endif
