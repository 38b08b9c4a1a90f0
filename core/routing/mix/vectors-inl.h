// Vectors for the loops. Compiled once for each instruction set: no include guard of its own, but Highway's.
#if defined(TOLVANE_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TOLVANE_VECTORS_INL_H
#undef TOLVANE_VECTORS_INL_H
#else
#define TOLVANE_VECTORS_INL_H
#endif

#include <cstddef>
#include <cstdint>

#include <hwy/highway.h>

// Vectors stay in registers only if every loop over them is unrolled.
#if HWY_COMPILER_CLANG
#define TOLVANE_UNROLLED _Pragma("clang loop unroll(full)")
#else
#define TOLVANE_UNROLLED _Pragma("GCC unroll 16")
#endif

HWY_BEFORE_NAMESPACE();
namespace tolvane {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Vector = hn::Vec<Floats>;

/// Floats in a vector.
inline constexpr std::int64_t kWidth = hn::MaxLanes(Floats());

}  // namespace HWY_NAMESPACE
}  // namespace tolvane
HWY_AFTER_NAMESPACE();
#endif
