// Vectors of kWidth floats. The rules of mix_kernels_impl.h hold here.
#pragma once

#include <cstddef>
#include <cstdint>

// Vectors stay in registers only if every loop over them is unrolled.
#if defined(__clang__)
#define TOLVANE_UNROLLED _Pragma("clang loop unroll(full)")
#else
#define TOLVANE_UNROLLED _Pragma("GCC unroll 16")
#endif

// Floats in a vector. A test may set a width that the processor does not have: the compiler then builds the
// vectors from shorter ones.
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

inline constexpr int kWidth = TOLVANE_MIX_WIDTH;

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

// Each function below is one instruction, except transposeQuarters. That one takes four vectors whose
// quarters hold four frames of four channels, and swaps frames and channels in each quarter.

__attribute__((always_inline)) inline void transposeQuarters(Vector<4> (&r)[4]) noexcept {
  const auto a = __builtin_shufflevector(r[0], r[1], 0, 4, 1, 5);
  const auto b = __builtin_shufflevector(r[0], r[1], 2, 6, 3, 7);
  const auto c = __builtin_shufflevector(r[2], r[3], 0, 4, 1, 5);
  const auto d = __builtin_shufflevector(r[2], r[3], 2, 6, 3, 7);
  r[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
  r[1] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
  r[2] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
  r[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}

#if TOLVANE_MIX_WIDTH >= 8
__attribute__((always_inline)) inline Vector<8> join(Vector<4> a, Vector<4> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7);
}
__attribute__((always_inline)) inline Vector<4> lowHalf(Vector<8> v) noexcept {
  return __builtin_shufflevector(v, v, 0, 1, 2, 3);
}
__attribute__((always_inline)) inline Vector<4> highHalf(Vector<8> v) noexcept {
  return __builtin_shufflevector(v, v, 4, 5, 6, 7);
}

__attribute__((always_inline)) inline void transposeQuarters(Vector<8> (&r)[4]) noexcept {
  const auto a = __builtin_shufflevector(r[0], r[1], 0, 8, 1, 9, 4, 12, 5, 13);
  const auto b = __builtin_shufflevector(r[0], r[1], 2, 10, 3, 11, 6, 14, 7, 15);
  const auto c = __builtin_shufflevector(r[2], r[3], 0, 8, 1, 9, 4, 12, 5, 13);
  const auto d = __builtin_shufflevector(r[2], r[3], 2, 10, 3, 11, 6, 14, 7, 15);
  r[0] = __builtin_shufflevector(a, c, 0, 1, 8, 9, 4, 5, 12, 13);
  r[1] = __builtin_shufflevector(a, c, 2, 3, 10, 11, 6, 7, 14, 15);
  r[2] = __builtin_shufflevector(b, d, 0, 1, 8, 9, 4, 5, 12, 13);
  r[3] = __builtin_shufflevector(b, d, 2, 3, 10, 11, 6, 7, 14, 15);
}
#endif

#if TOLVANE_MIX_WIDTH >= 16
__attribute__((always_inline)) inline Vector<16> join(Vector<8> a, Vector<8> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
__attribute__((always_inline)) inline Vector<8> lowHalf(Vector<16> v) noexcept {
  return __builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7);
}
__attribute__((always_inline)) inline Vector<8> highHalf(Vector<16> v) noexcept {
  return __builtin_shufflevector(v, v, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Interleaves the first (or last) two floats of each quarter of two vectors.
__attribute__((always_inline)) inline Vector<16> firstPairs(Vector<16> a, Vector<16> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 4, 20, 5, 21, 8, 24, 9, 25, 12, 28, 13, 29);
}
__attribute__((always_inline)) inline Vector<16> lastPairs(Vector<16> a, Vector<16> b) noexcept {
  return __builtin_shufflevector(a, b, 2, 18, 3, 19, 6, 22, 7, 23, 10, 26, 11, 27, 14, 30, 15, 31);
}
// Concatenates the first (or last) two floats of each quarter of two vectors.
__attribute__((always_inline)) inline Vector<16> firstHalves(Vector<16> a, Vector<16> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 1, 16, 17, 4, 5, 20, 21, 8, 9, 24, 25, 12, 13, 28, 29);
}
__attribute__((always_inline)) inline Vector<16> lastHalves(Vector<16> a, Vector<16> b) noexcept {
  return __builtin_shufflevector(a, b, 2, 3, 18, 19, 6, 7, 22, 23, 10, 11, 26, 27, 14, 15, 30, 31);
}

__attribute__((always_inline)) inline void transposeQuarters(Vector<16> (&r)[4]) noexcept {
  const auto a = firstPairs(r[0], r[1]);
  const auto b = lastPairs(r[0], r[1]);
  const auto c = firstPairs(r[2], r[3]);
  const auto d = lastPairs(r[2], r[3]);
  r[0] = firstHalves(a, c);
  r[1] = lastHalves(a, c);
  r[2] = firstHalves(b, d);
  r[3] = lastHalves(b, d);
}
#endif

}  // namespace
}  // namespace tolvane
