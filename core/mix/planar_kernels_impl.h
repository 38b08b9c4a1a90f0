// The loops over planar channels of mix_kernels.h. They come with mix_kernels_impl.h, whose rules hold here.
#pragma once

#include "core/mix/mix_kernels.h"
#include "core/mix/mix_vectors_impl.h"

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
    // Or the compiler would see that this is memset.
    __asm__ volatile("" : : : "memory");
  }
  if (bytes != 0) __builtin_memset(at, 0, bytes);
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
  // Of one or two sources a stretch, as there is little else to do; of more a cache line of each, in turns.
  constexpr std::int64_t kVectors = Count > 2 ? kLineFloats / kWidth : 4;
  for (; f + kVectors * kWidth <= end; f += kVectors * kWidth) {
    TOLVANE_UNROLLED
    for (std::int64_t v = 0; v < kVectors; ++v)
      addVectors<kWidth, Count, First>(to, from, gains, f + v * kWidth);
  }
  for (; f + kWidth <= end; f += kWidth) addVectors<kWidth, Count, First>(to, from, gains, f);
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
  const MixSource only = {source, kWholeChannel, gain};
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

}  // namespace
}  // namespace tolvane
