// The loops of mix_kernels.h for vectors of kMaxWidth floats. Included by one source file for each
// instruction set, compiled with that set's flags: so everything here has internal linkage, and nothing of
// the standard library's inline code is used, lest a copy with the wrong instructions serve the whole
// program.
#pragma once

#include "core/mix/lane_kernels_impl.h"
#include "core/mix/mix_kernels.h"
#include "core/mix/mix_vectors_impl.h"

namespace tolvane {
namespace {

// Transposes a square of vectors in registers: row i, lane j becomes row j, lane i. Each step is an
// instruction that the set has: pairs of floats, then pairs of doubles, then quarters of the vector.
__attribute__((always_inline)) inline void transpose(Vector<4> (&r)[4]) noexcept {
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
__attribute__((always_inline)) inline void transposeLanes(Vector<8> (&r)[8], int q) noexcept {
  const auto a = __builtin_shufflevector(r[q], r[q + 1], 0, 8, 1, 9, 4, 12, 5, 13);
  const auto b = __builtin_shufflevector(r[q], r[q + 1], 2, 10, 3, 11, 6, 14, 7, 15);
  const auto c = __builtin_shufflevector(r[q + 2], r[q + 3], 0, 8, 1, 9, 4, 12, 5, 13);
  const auto d = __builtin_shufflevector(r[q + 2], r[q + 3], 2, 10, 3, 11, 6, 14, 7, 15);
  r[q] = __builtin_shufflevector(a, c, 0, 1, 8, 9, 4, 5, 12, 13);
  r[q + 1] = __builtin_shufflevector(a, c, 2, 3, 10, 11, 6, 7, 14, 15);
  r[q + 2] = __builtin_shufflevector(b, d, 0, 1, 8, 9, 4, 5, 12, 13);
  r[q + 3] = __builtin_shufflevector(b, d, 2, 3, 10, 11, 6, 7, 14, 15);
}

__attribute__((always_inline)) inline void transpose(Vector<8> (&r)[8]) noexcept {
  transposeLanes(r, 0);
  transposeLanes(r, 4);
  TOLVANE_UNROLLED
  for (int j = 0; j < 4; ++j) {
    const auto low = r[j];
    const auto high = r[j + 4];
    r[j] = __builtin_shufflevector(low, high, 0, 1, 2, 3, 8, 9, 10, 11);
    r[j + 4] = __builtin_shufflevector(low, high, 4, 5, 6, 7, 12, 13, 14, 15);
  }
}
#endif

#if TOLVANE_MIX_WIDTH >= 16
__attribute__((always_inline)) inline void transposeLanes(Vector<16> (&r)[16], int q) noexcept {
  const auto a =
      __builtin_shufflevector(r[q], r[q + 1], 0, 16, 1, 17, 4, 20, 5, 21, 8, 24, 9, 25, 12, 28, 13, 29);
  const auto b =
      __builtin_shufflevector(r[q], r[q + 1], 2, 18, 3, 19, 6, 22, 7, 23, 10, 26, 11, 27, 14, 30, 15, 31);
  const auto c =
      __builtin_shufflevector(r[q + 2], r[q + 3], 0, 16, 1, 17, 4, 20, 5, 21, 8, 24, 9, 25, 12, 28, 13, 29);
  const auto d =
      __builtin_shufflevector(r[q + 2], r[q + 3], 2, 18, 3, 19, 6, 22, 7, 23, 10, 26, 11, 27, 14, 30, 15, 31);
  r[q] = __builtin_shufflevector(a, c, 0, 1, 16, 17, 4, 5, 20, 21, 8, 9, 24, 25, 12, 13, 28, 29);
  r[q + 1] = __builtin_shufflevector(a, c, 2, 3, 18, 19, 6, 7, 22, 23, 10, 11, 26, 27, 14, 15, 30, 31);
  r[q + 2] = __builtin_shufflevector(b, d, 0, 1, 16, 17, 4, 5, 20, 21, 8, 9, 24, 25, 12, 13, 28, 29);
  r[q + 3] = __builtin_shufflevector(b, d, 2, 3, 18, 19, 6, 7, 22, 23, 10, 11, 26, 27, 14, 15, 30, 31);
}

// Of each of two vectors the even, or the odd, quarters.
__attribute__((always_inline)) inline Vector<16> evenQuarters(Vector<16> a, Vector<16> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11, 16, 17, 18, 19, 24, 25, 26, 27);
}
__attribute__((always_inline)) inline Vector<16> oddQuarters(Vector<16> a, Vector<16> b) noexcept {
  return __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15, 20, 21, 22, 23, 28, 29, 30, 31);
}

__attribute__((always_inline)) inline void transpose(Vector<16> (&r)[16]) noexcept {
  TOLVANE_UNROLLED
  for (int q = 0; q < 16; q += 4) transposeLanes(r, q);
  TOLVANE_UNROLLED
  for (int j = 0; j < 4; ++j) {
    const auto even01 = evenQuarters(r[j], r[j + 4]);
    const auto odd01 = oddQuarters(r[j], r[j + 4]);
    const auto even23 = evenQuarters(r[j + 8], r[j + 12]);
    const auto odd23 = oddQuarters(r[j + 8], r[j + 12]);
    r[j] = evenQuarters(even01, even23);
    r[j + 4] = evenQuarters(odd01, odd23);
    r[j + 8] = oddQuarters(even01, even23);
    r[j + 12] = oddQuarters(odd01, odd23);
  }
}
#endif

// A row is stored by whole vectors of the form: one that is put together in memory from narrower stores would
// stall the load that follows. So squares that lie side by side are joined, and split, in registers.
#if TOLVANE_MIX_WIDTH >= 8
__attribute__((always_inline)) inline Vector<8> join(Vector<4> a, Vector<4> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7);
}
#endif
#if TOLVANE_MIX_WIDTH >= 16
__attribute__((always_inline)) inline Vector<16> join(Vector<8> a, Vector<8> b) noexcept {
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
#endif

/// Row `row` of squares that lie side by side, as one vector.
template <std::size_t Width, std::size_t Count>
__attribute__((always_inline)) inline Vector<Width * Count> joinedRow(
    const Vector<Width> (&squares)[Count][Width], std::size_t row) noexcept {
  if constexpr (Count == 1) return squares[0][row];
  if constexpr (Count == 2) return join(squares[0][row], squares[1][row]);
  if constexpr (Count == 4) {
    return join(join(squares[0][row], squares[1][row]), join(squares[2][row], squares[3][row]));
  }
}

template <std::size_t Width>
__attribute__((always_inline)) inline void gatherSquares(const GatherGroup& group,
                                                         const float* from) noexcept {
  constexpr std::size_t kSquares = kMaxWidth / Width;
  for (std::size_t first = 0; first < kBlockFrames; first += kMaxWidth) {
    Vector<Width> squares[kSquares][Width];
    TOLVANE_UNROLLED
    for (std::size_t s = 0; s < kSquares; ++s) {
      TOLVANE_UNROLLED
      for (std::size_t i = 0; i < Width; ++i) {
        squares[s][i] = load<Width>(from + static_cast<std::ptrdiff_t>(first + s * Width + i) * group.stride);
      }
      transpose(squares[s]);
    }
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < Width; ++i) {
      store<kMaxWidth>(group.rows + i * std::size_t{kBlockFrames} + first, joinedRow(squares, i));
    }
  }
}

__attribute__((always_inline)) inline void gatherOne(const GatherGroup& group, const float* from) noexcept {
  for (std::size_t first = 0; first < kBlockFrames; first += kMaxWidth) {
    Vector<kMaxWidth> row;
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < kMaxWidth; ++i) {
      row[i] = from[static_cast<std::ptrdiff_t>(first + i) * group.stride];
    }
    store<kMaxWidth>(group.rows + first, row);
  }
}

__attribute__((always_inline)) inline void gather(const GatherGroup& group, const float* from) noexcept {
  switch (group.width) {
#if TOLVANE_MIX_WIDTH >= 16
    case 16:
      return gatherSquares<16>(group, from);
#endif
#if TOLVANE_MIX_WIDTH >= 8
    case 8:
      return gatherSquares<8>(group, from);
#endif
    case 4:
      return gatherSquares<4>(group, from);
    default:
      return gatherOne(group, from);
  }
}

inline void gatherBlock(const GatherGroup* groups, std::int32_t count, std::int64_t block) noexcept {
  for (std::int32_t g = 0; g < count; ++g) {
    gather(groups[g], groups[g].data + block * kBlockFrames * groups[g].stride);
  }
}

/// Sums one vector of each of `Count` sources, from frame `f` on, upon what is there, or upon positive zero.
template <std::size_t Width, std::size_t Count, bool First>
__attribute__((always_inline)) inline void addVectors(float* to, const float* const (&from)[Count],
                                                      const float (&gains)[Count], std::int64_t f) noexcept {
  Vector<Width> sum = {};
  if constexpr (!First) sum = load<Width>(to + f);
  TOLVANE_UNROLLED
  for (std::size_t s = 0; s < Count; ++s) sum += load<Width>(from[s] + f) * gains[s];
  store<Width>(to + f, sum);
}

/// The same for frames `f` to `end`, their addresses and gains held in registers.
template <std::size_t Count, bool First>
__attribute__((always_inline)) inline void addSources(float* to, const MixSource* sources, std::int64_t f,
                                                      std::int64_t end) noexcept {
  const float* from[Count];
  float gains[Count];
  TOLVANE_UNROLLED
  for (std::size_t s = 0; s < Count; ++s) {
    from[s] = sources[s].data;
    gains[s] = sources[s].gain;
  }
  constexpr std::int64_t kVectors = 4;
  for (; f + kVectors * kMaxWidth <= end; f += kVectors * kMaxWidth) {
    TOLVANE_UNROLLED
    for (std::int64_t v = 0; v < kVectors; ++v)
      addVectors<kMaxWidth, Count, First>(to, from, gains, f + v * kMaxWidth);
  }
  for (; f + kMaxWidth <= end; f += kMaxWidth) addVectors<kMaxWidth, Count, First>(to, from, gains, f);
  for (; f < end; ++f) addVectors<1, Count, First>(to, from, gains, f);
}

/// At most eight sources at a time, as many as have registers for their addresses and gains.
template <bool First>
__attribute__((always_inline)) inline void addFewSources(float* to, const MixSource* sources,
                                                         std::int32_t count, std::int64_t f,
                                                         std::int64_t end) noexcept {
  switch (count) {
    case 1:
      return addSources<1, First>(to, sources, f, end);
    case 2:
      return addSources<2, First>(to, sources, f, end);
    case 3:
      return addSources<3, First>(to, sources, f, end);
    case 4:
      return addSources<4, First>(to, sources, f, end);
    case 5:
      return addSources<5, First>(to, sources, f, end);
    case 6:
      return addSources<6, First>(to, sources, f, end);
    case 7:
      return addSources<7, First>(to, sources, f, end);
    default:
      return addSources<8, First>(to, sources, f, end);
  }
}

inline void scalePlanar(float* target, const float* source, float gain, std::int64_t frames) noexcept {
  const MixSource only = {source, 0, gain};
  addSources<1, true>(target, &only, 0, frames);
}

inline void mixPlanar(float* target, const MixSource* sources, std::int32_t sourceCount,
                      std::int64_t frames) noexcept {
  // The sums of so many frames stay in the first cache from four sources to the next.
  constexpr std::int64_t kFramesInCache = 1024;
  for (std::int64_t f = 0; f < frames; f += kFramesInCache) {
    const std::int64_t end = frames - f < kFramesInCache ? frames : f + kFramesInCache;
    addFewSources<true>(target, sources, sourceCount, f, end);
    for (std::int32_t s = 8; s < sourceCount; s += 8) {
      addFewSources<false>(target, sources + s, sourceCount - s, f, end);
    }
  }
}

/// A vector of one target's block, from its frame `first` on. A source's `blockStep` is 0 for a row of the
/// tile and a block for a planar channel.
template <std::size_t Width>
__attribute__((always_inline)) inline Vector<Width> sumInBlock(const MixTarget& target, std::int64_t block,
                                                               std::size_t first) noexcept {
  Vector<Width> sum = {};
  std::int32_t s = 0;
  do {
    const MixSource& source = target.sources[s];
    sum += load<Width>(source.data + block * source.blockStep + first) * source.gain;
  } while (++s < target.sourceCount);
  return sum;
}

inline void mixBlock(const MixTarget* targets, std::int32_t count, std::int64_t block) noexcept {
  for (std::int32_t t = 0; t < count; ++t) {
    float* const to = targets[t].data + block * kBlockFrames;
    TOLVANE_UNROLLED
    for (std::size_t first = 0; first < kBlockFrames; first += kMaxWidth) {
      store<kMaxWidth>(to + first, sumInBlock<kMaxWidth>(targets[t], block, first));
    }
  }
}

template <std::size_t Width>
__attribute__((always_inline)) inline void scatterSquares(const ScatterGroup& group, float* to,
                                                          std::int64_t block) noexcept {
  constexpr std::size_t kSquares = kMaxWidth / Width;
  for (std::size_t first = 0; first < kBlockFrames; first += kMaxWidth) {
    Vector<Width> squares[kSquares][Width];
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < Width; ++i) {
      Vector<kMaxWidth> sum = {};
      if (group.targets[i] != nullptr) sum = sumInBlock<kMaxWidth>(*group.targets[i], block, first);
      TOLVANE_UNROLLED
      for (std::size_t s = 0; s < kSquares; ++s) {
        __builtin_memcpy(&squares[s][i], reinterpret_cast<const char*>(&sum) + s * sizeof(Vector<Width>),
                         sizeof(Vector<Width>));
      }
    }
    TOLVANE_UNROLLED
    for (std::size_t s = 0; s < kSquares; ++s) {
      transpose(squares[s]);
      TOLVANE_UNROLLED
      for (std::size_t i = 0; i < Width; ++i) {
        store<Width>(to + static_cast<std::ptrdiff_t>(first + s * Width + i) * group.stride, squares[s][i]);
      }
    }
  }
}

__attribute__((always_inline)) inline void scatterOne(const ScatterGroup& group, float* to,
                                                      std::int64_t block) noexcept {
  for (std::size_t first = 0; first < kBlockFrames; first += kMaxWidth) {
    const Vector<kMaxWidth> sum = sumInBlock<kMaxWidth>(*group.targets[0], block, first);
    for (std::size_t i = 0; i < kMaxWidth; ++i)
      to[static_cast<std::ptrdiff_t>(first + i) * group.stride] = sum[i];
  }
}

inline void scatterBlock(const ScatterGroup* groups, std::int32_t count, std::int64_t block) noexcept {
  for (std::int32_t g = 0; g < count; ++g) {
    const ScatterGroup& group = groups[g];
    float* const to = group.data + block * kBlockFrames * group.stride;
    switch (group.width) {
#if TOLVANE_MIX_WIDTH >= 16
      case 16:
        scatterSquares<16>(group, to, block);
        break;
#endif
#if TOLVANE_MIX_WIDTH >= 8
      case 8:
        scatterSquares<8>(group, to, block);
        break;
#endif
      case 4:
        scatterSquares<4>(group, to, block);
        break;
      default:
        scatterOne(group, to, block);
    }
  }
}

}  // namespace
}  // namespace tolvane
