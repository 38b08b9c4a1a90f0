// The loop over lanes of mix_kernels.h, from interleaved buffers to interleaved buffers frame by frame. It
// comes with mix_kernels_impl.h, whose rules hold here.
#pragma once

#include "core/mix/mix_kernels.h"
#include "core/mix/mix_vectors_impl.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace tolvane {
namespace {

template <std::size_t Width>
struct IntLanes {
  typedef std::int32_t Type __attribute__((vector_size(Width * sizeof(std::int32_t))));
};
using LaneVector = Vector<kMaxWidth>;
using LaneIndices = typename IntLanes<kMaxWidth>::Type;

// Whether a vector's lanes can be put into any order, by one instruction.
inline constexpr bool kPermutes = kMaxWidth >= 8;

__attribute__((always_inline)) inline LaneIndices loadIndices(const std::int32_t* from) noexcept {
  LaneIndices v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}

__attribute__((always_inline)) inline LaneVector permuted(LaneVector v, LaneIndices order) noexcept {
#if defined(__AVX512F__)
  // With a mask of all lanes: the form without one makes GCC 12 see an uninitialised vector.
  return _mm512_maskz_permutexvar_ps(0xFFFF, reinterpret_cast<__m512i>(order), v);
#elif defined(__AVX2__)
  return _mm256_permutevar8x32_ps(v, reinterpret_cast<__m256i>(order));
#else
  LaneVector result = v;
  for (std::size_t i = 0; i < kMaxWidth; ++i) result[i] = v[static_cast<std::size_t>(order[i])];
  return result;
#endif
}

__attribute__((always_inline)) inline LaneVector masked(LaneVector v, LaneIndices mask) noexcept {
  return reinterpret_cast<LaneVector>(reinterpret_cast<LaneIndices>(v) & mask);
}

/// Keeps the loads of one branch from being joined with those of another in front of both, which takes more
/// registers than there are.
__attribute__((always_inline)) inline void keepHere(const float*& from) noexcept {
  __asm__("" : "+r"(from));
}

/// Adds one layer to the sums of `Frames` frames from `from` on. A lane that the layer leaves out gets 0 · 0
/// added, which changes no sum: none is ever negative zero, as each starts from positive zero.
template <std::size_t Frames>
__attribute__((always_inline)) inline void addLayer(LaneVector (&sums)[Frames], const LaneLayer& layer,
                                                    const float* from) noexcept {
  const std::ptrdiff_t stride = layer.stride;
  const auto gains = load<kMaxWidth>(layer.gains);
  if (layer.order == LaneLayer::Order::whole) {
    keepHere(from);
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < Frames; ++i)
      sums[i] += load<kMaxWidth>(from + static_cast<std::ptrdiff_t>(i) * stride) * gains;
    return;
  }
  const LaneIndices mask = loadIndices(layer.mask);
  if (!kPermutes || layer.order == LaneLayer::Order::masked) {
    keepHere(from);
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < Frames; ++i)
      sums[i] += masked(load<kMaxWidth>(from + static_cast<std::ptrdiff_t>(i) * stride), mask) * gains;
    return;
  }
  keepHere(from);
  const LaneIndices order = loadIndices(layer.lanes);
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Frames; ++i) {
    const auto v = load<kMaxWidth>(from + static_cast<std::ptrdiff_t>(i) * stride);
    sums[i] += masked(permuted(v, order), mask) * gains;
  }
}

template <std::size_t Frames>
__attribute__((always_inline)) inline void mixLaneFrames(const LaneGroup& group,
                                                         std::int64_t frame) noexcept {
  const std::ptrdiff_t stride = group.stride;
  float* const to = group.data + frame * stride;
  LaneVector sums[Frames] = {};
  const LaneLayer* const end = group.layers + group.layerCount;
  for (const LaneLayer* layer = group.layers; layer != end; ++layer) {
    addLayer(sums, *layer, layer->data + frame * layer->stride);
  }
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Frames; ++i)
    store<kMaxWidth>(to + static_cast<std::ptrdiff_t>(i) * stride, sums[i]);
}

/// Frames at a time: as many sums as stay in registers.
inline constexpr std::int64_t kLaneFrames = 8;

/// A stretch of frames whose lines all stay in the first cache while group after group goes over it.
__attribute__((always_inline)) inline std::int64_t framesInCache(std::ptrdiff_t stride) noexcept {
  if (stride <= 32) return 64;
  return stride <= 128 ? 16 : 8;
}

inline void mixLanes(const LaneGroup* groups, std::int32_t count, std::int64_t frames) noexcept {
  const std::int64_t stretch = count > 0 ? framesInCache(groups[0].stride) : 0;
  for (std::int64_t first = 0; first < frames; first += stretch) {
    const std::int64_t end = frames - first < stretch ? frames : first + stretch;
    for (std::int32_t g = 0; g < count; ++g) {
      const LaneGroup group = groups[g];
      std::int64_t f = first;
      for (; f + kLaneFrames <= end; f += kLaneFrames) mixLaneFrames<kLaneFrames>(group, f);
      for (; f < end; ++f) mixLaneFrames<1>(group, f);
    }
  }
}

}  // namespace
}  // namespace tolvane
