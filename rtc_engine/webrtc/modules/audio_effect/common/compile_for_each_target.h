// A kernel file is compiled once for each vector instruction set, and the best set of the processor is chosen
// at the first call. Highway does it by letting the file include itself. Every kernel file has this shape:
//
//   #define HWY_TARGET_INCLUDE "pcm.cpp"           the file's own name
//   #include "compile_for_each_target.h"           before every other include
//
//   HWY_BEFORE_NAMESPACE();
//   namespace sonivex::HWY_NAMESPACE {             compiled once per instruction set
//   void kernel(...) { ... }
//   }
//   HWY_AFTER_NAMESPACE();
//
//   #if HWY_ONCE                                   compiled once
//   namespace sonivex {
//   HWY_EXPORT(kernel);                            a table of the kernels, one entry per instruction set
//   void kernel(...) { HWY_DYNAMIC_DISPATCH(kernel)(...); }
//   }
//   #endif
//
// This header has no include guard, because each of those passes needs Highway's headers again.

#include "vector_targets.h"
// vector_targets.h must precede every Highway header.
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// The kernels' doubles where Highway has none.
#include "wasm_doubles-inl.h"
