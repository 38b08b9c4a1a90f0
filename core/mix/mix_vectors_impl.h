// Vectors of kMaxWidth floats, as the loops of mix_kernels_impl.h use them; the rules are the same.
#pragma once

#include <cstddef>
#include <cstdint>

// Squares of vectors live in registers only when every loop over them is unrolled.
#if defined(__clang__)
#define TOLVANE_UNROLLED _Pragma("clang loop unroll(full)")
#else
#define TOLVANE_UNROLLED _Pragma("GCC unroll 16")
#endif

// Floats in a vector of the form. A test may set it to what the processor does not have: the compiler then
// puts the vectors together from shorter ones.
#if !defined(TOLVANE_MIX_WIDTH)
#if defined(__AVX512F__)
#define TOLVANE_MIX_WIDTH 16
#elif defined(__AVX2__)
#define TOLVANE_MIX_WIDTH 8
#else
#define TOLVANE_MIX_WIDTH 4
#endif
#endif

namespace tolvane {
namespace {

inline constexpr int kMaxWidth = TOLVANE_MIX_WIDTH;

template <std::size_t Width>
struct Lanes {
  typedef float Type __attribute__((vector_size(Width * sizeof(float))));
};
template <std::size_t Width>
using Vector = typename Lanes<Width>::Type;

template <std::size_t Width>
__attribute__((always_inline)) inline Vector<Width> load(const float* from) noexcept {
  Vector<Width> v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}

template <std::size_t Width>
__attribute__((always_inline)) inline void store(float* to, Vector<Width> v) noexcept {
  __builtin_memcpy(to, &v, sizeof v);
}

}  // namespace
}  // namespace tolvane
