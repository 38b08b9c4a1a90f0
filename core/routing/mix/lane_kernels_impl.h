// The loop over lanes: from interleaved buffers to interleaved buffers, frame by frame. The rules of
// mix_kernels_impl.h hold here.
#pragma once

#include "core/routing/mix/frame_addresses_impl.h"
#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/mix_vectors_impl.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace tolvane {
namespace {

// Whether one instruction loads some lanes of a vector and reads no memory for the others. Without such an
// instruction loadMasked() loads lane by lane; only tests use that.
inline constexpr bool kLoadsMasked = kWidth >= 8;

inline constexpr std::uint32_t kAllLanes = (std::uint32_t{1} << kWidth) - 1;

/// A set of lanes, in the form that masked loads take.
#if defined(__AVX512F__)
using LaneMask = __mmask16;
#elif defined(__AVX2__)
using LaneMask = __m256i;
#else
using LaneMask = std::uint32_t;
#endif

__attribute__((always_inline)) inline LaneMask maskOf(std::uint32_t lanes) noexcept {
#if defined(__AVX512F__)
  return static_cast<LaneMask>(lanes);
#elif defined(__AVX2__)
  // The highest bit of each lane selects it.
  return _mm256_sllv_epi32(_mm256_set1_epi32(static_cast<int>(lanes)),
                           _mm256_setr_epi32(31, 30, 29, 28, 27, 26, 25, 24));
#else
  return lanes;
#endif
}

/// Loads the lanes of the mask; the others are positive zero.
__attribute__((always_inline)) inline Vector<kWidth> loadMasked(const float* from, LaneMask mask) noexcept {
#if defined(__AVX512F__)
  return _mm512_maskz_loadu_ps(mask, from);
#elif defined(__AVX2__)
  return _mm256_maskload_ps(from, mask);
#else
  Vector<kWidth> v = {};
  for (int i = 0; i < kWidth; ++i) {
    if ((mask >> i & 1U) != 0) v[i] = from[i];
  }
  return v;
#endif
}

/// Keeps the compiler from computing the addresses of both branches in advance, for which it has too few
/// registers.
__attribute__((always_inline)) inline void keepHere(std::uintptr_t& from) noexcept {
  __asm__("" : "+r"(from));
}

/// Adds one layer to the sums of `Count` frames that start at `from`. A lane without a route in this layer
/// adds 0 * 0. That changes no sum: a sum starts at positive zero and is never negative zero.
template <std::size_t Count>
__attribute__((always_inline)) inline void addLayer(Vector<kWidth> (&sums)[Count], const LaneLayer& layer,
                                                    std::uintptr_t from, const Frames& frames) noexcept {
  const auto gains = load<kWidth>(layer.gains);
  if (layer.lanes == kAllLanes) {
    keepHere(from);
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < Count; ++i) sums[i] += load<kWidth>(frames(from, i)) * gains;
    return;
  }
  keepHere(from);
  const LaneMask mask = maskOf(layer.lanes);
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Count; ++i) sums[i] += loadMasked(frames(from, i), mask) * gains;
}

template <std::size_t Count>
__attribute__((always_inline)) inline void mixLaneFrames(const LaneGroup& group, const Frames& from,
                                                         const Frames& to, std::int64_t frame) noexcept {
  Vector<kWidth> sums[Count] = {};
  // Addresses stay integers until they are used: the address of lane 0 may lie outside the buffer.
  const auto first = static_cast<std::uintptr_t>(frame * group.sourceStride) * sizeof(float);
  const LaneLayer* const end = group.layers + group.layerCount;
  for (const LaneLayer* layer = group.layers; layer != end; ++layer)
    addLayer<Count>(sums, *layer, layer->base + first, from);
  const auto target = reinterpret_cast<std::uintptr_t>(group.data + frame * group.stride);
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Count; ++i) store<kWidth>(to(target, i), sums[i]);
}

/// Frames per step: as many sums as fit in registers.
inline constexpr std::int64_t kLaneFrames = 12;

/// As many frames as stay in the first-level cache while all groups pass over them.
__attribute__((always_inline)) inline std::int64_t framesInCache(std::ptrdiff_t stride) noexcept {
  if (stride <= 32) return 60;
  return stride <= 128 ? 24 : 12;
}

inline void mixLanes(const LaneGroup* groups, std::int32_t count, std::int64_t frames) noexcept {
  const std::int64_t stretch = count > 0 ? framesInCache(groups[0].stride) : 0;
  for (std::int64_t first = 0; first < frames; first += stretch) {
    const std::int64_t end = frames - first < stretch ? frames : first + stretch;
    for (std::int32_t g = 0; g < count; ++g) {
      const LaneGroup group = groups[g];
      const Frames from(group.sourceStride);
      const Frames to(group.stride);
      std::int64_t f = first;
      for (; f + kLaneFrames <= end; f += kLaneFrames) mixLaneFrames<kLaneFrames>(group, from, to, f);
      for (; f + 4 <= end; f += 4) mixLaneFrames<4>(group, from, to, f);
      for (; f < end; ++f) mixLaneFrames<1>(group, from, to, f);
    }
  }
}

}  // namespace
}  // namespace tolvane
