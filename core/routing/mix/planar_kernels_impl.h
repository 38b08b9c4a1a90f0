// The loops over planar channels. The rules of mix_kernels_impl.h hold here.
#pragma once

#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/mix_vectors_impl.h"

namespace tolvane {
namespace {

inline constexpr int kLineFloats = 16;

inline void clear(void* data, std::size_t bytes) noexcept {
  constexpr std::size_t kVectors = 4;
  constexpr std::size_t kStep = kVectors * sizeof(Vector<kWidth>);
  auto* at = static_cast<char*>(data);
  const Vector<kWidth> zero = {};
  for (; bytes >= kStep; at += kStep, bytes -= kStep) {
    TOLVANE_UNROLLED
    for (std::size_t v = 0; v < kVectors; ++v) __builtin_memcpy(at + v * sizeof zero, &zero, sizeof zero);
    // Keeps the compiler from replacing the loop by memset.
    __asm__ volatile("" : : : "memory");
  }
  if (bytes != 0) __builtin_memset(at, 0, bytes);
}

/// Adds one vector of each of `Count` sources, at frame `f`, to `to`, or to positive zero if `First`.
template <std::size_t Width, std::size_t Count, bool First>
__attribute__((always_inline)) inline void addVectors(float* to, const float* const (&from)[Count],
                                                      const float (&gains)[Count], std::int64_t f) noexcept {
  Vector<Width> sum = {};
  if constexpr (!First) sum = load<Width>(to + f);
  TOLVANE_UNROLLED
  for (std::size_t s = 0; s < Count; ++s) sum += load<Width>(from[s] + f) * gains[s];
  store<Width>(to + f, sum);
}

/// The same for frames `f` to `end`. The sources' addresses and gains stay in registers.
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
  // One or two sources: four vectors at once, to keep the overhead low. More sources: one cache line of each
  // in turn.
  constexpr std::int64_t kVectors = Count > 2 ? kLineFloats / kWidth : 4;
  for (; f + kVectors * kWidth <= end; f += kVectors * kWidth) {
    TOLVANE_UNROLLED
    for (std::int64_t v = 0; v < kVectors; ++v)
      addVectors<kWidth, Count, First>(to, from, gains, f + v * kWidth);
  }
  for (; f + kWidth <= end; f += kWidth) addVectors<kWidth, Count, First>(to, from, gains, f);
  for (; f < end; ++f) addVectors<1, Count, First>(to, from, gains, f);
}

/// Adds at most eight sources: as many as have registers for their addresses and gains.
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
  const MixSource only = {source, kWholeChannel, gain};
  addSources<1, true>(target, &only, 0, frames);
}

inline void mixPlanar(float* target, const MixSource* sources, std::int32_t sourceCount,
                      std::int64_t frames) noexcept {
  // The sums of this many frames stay in the first-level cache from one set of sources to the next.
  constexpr std::int64_t kFramesInCache = 1024;
  for (std::int64_t f = 0; f < frames; f += kFramesInCache) {
    const std::int64_t end = frames - f < kFramesInCache ? frames : f + kFramesInCache;
    addFewSources<true>(target, sources, sourceCount, f, end);
    for (std::int32_t s = 8; s < sourceCount; s += 8) {
      addFewSources<false>(target, sources + s, sourceCount - s, f, end);
    }
  }
}

}  // namespace
}  // namespace tolvane
