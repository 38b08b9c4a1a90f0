// The loop over lanes: from interleaved buffers to interleaved buffers, frame by frame.
#if defined(TOLVANE_LANES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TOLVANE_LANES_INL_H
#undef TOLVANE_LANES_INL_H
#else
#define TOLVANE_LANES_INL_H
#endif

#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/vectors-inl.h"

#if HWY_TARGET != HWY_SCALAR  // one float is no vector of channels
HWY_BEFORE_NAMESPACE();
namespace tolvane {
namespace HWY_NAMESPACE {

// Whether a masked load reads no memory for the lanes that it leaves out. With AVX2 it does so for floats;
// only shorter values may fault.
inline constexpr bool kLoadsMasked = !HWY_MEM_OPS_MIGHT_FAULT || HWY_TARGET == HWY_AVX2;

inline constexpr std::uint64_t kAllLanes = (std::uint64_t{1} << kWidth) - 1;

/// Frame `frame` of a buffer whose frame 0 is at `first` and whose frames are `strideBytes` apart. Addresses
/// stay integers until they are used: the address of lane 0 may lie outside the buffer.
HWY_INLINE float* frameAt(std::uintptr_t first, std::uintptr_t strideBytes, std::size_t frame) noexcept {
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  return reinterpret_cast<float*>(first + frame * strideBytes);
}

/// Keeps the compiler from computing the addresses of both branches in advance, for which it has too few
/// registers.
HWY_INLINE void keepHere(std::uintptr_t& from) noexcept {
  __asm__("" : "+r"(from));
}

/// Adds one layer to the sums of `Count` frames that start at `from`. A lane without a route in this layer
/// adds 0 * 0. That changes no sum: a sum starts at positive zero and is never negative zero.
template <std::size_t Count>
HWY_INLINE void addLayer(Vector (&sums)[Count], const LaneLayer& layer, std::uintptr_t from,
                         std::uintptr_t strideBytes) noexcept {
  const Floats d;
  const Vector gains = hn::Load(d, layer.gains);
  keepHere(from);
  if (layer.lanes == kAllLanes) {
    TOLVANE_UNROLLED
    for (std::size_t i = 0; i < Count; ++i)
      sums[i] = hn::Add(sums[i], hn::Mul(hn::LoadU(d, frameAt(from, strideBytes, i)), gains));
    return;
  }
  keepHere(from);
  const auto lanes = hn::LoadMaskBits(d, reinterpret_cast<const std::uint8_t*>(&layer.lanes));
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Count; ++i)
    sums[i] = hn::Add(sums[i], hn::Mul(hn::MaskedLoad(lanes, d, frameAt(from, strideBytes, i)), gains));
}

/// Sums `Count` frames of a group, from `frame` on.
template <std::size_t Count>
HWY_INLINE void mixLaneFrames(const LaneGroup& group, std::int64_t frame) noexcept {
  const Floats d;
  Vector sums[Count];
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Count; ++i) sums[i] = hn::Zero(d);
  const auto sourceStrideBytes = static_cast<std::uintptr_t>(group.sourceStride) * sizeof(float);
  const std::uintptr_t first = static_cast<std::uintptr_t>(frame) * sourceStrideBytes;
  const LaneLayer* const end = group.layers + group.layerCount;
  for (const LaneLayer* layer = group.layers; layer != end; ++layer)
    addLayer<Count>(sums, *layer, layer->base + first, sourceStrideBytes);
  float* const target = group.data + frame * group.stride;
  TOLVANE_UNROLLED
  for (std::size_t i = 0; i < Count; ++i)
    hn::StoreU(sums[i], d, target + static_cast<std::ptrdiff_t>(i) * group.stride);
}

/// Frames per step: enough sums to hide the time of an addition, few enough to stay in registers.
inline constexpr std::int64_t kLaneFrames = 8;

/// As many frames as stay in the first-level cache while all groups pass over them.
HWY_INLINE std::int64_t framesInCache(std::ptrdiff_t stride) noexcept {
  if (stride <= 32) return 64;
  return stride <= 128 ? 24 : 8;
}

inline HWY_ATTR void mixLanes(const LaneGroup* groups, std::int32_t count, std::int64_t frames) noexcept {
  const std::int64_t stretch = count > 0 ? framesInCache(groups[0].stride) : 0;
  for (std::int64_t first = 0; first < frames; first += stretch) {
    const std::int64_t end = HWY_MIN(frames, first + stretch);
    for (std::int32_t g = 0; g < count; ++g) {
      const LaneGroup group = groups[g];
      std::int64_t f = first;
      for (; f + kLaneFrames <= end; f += kLaneFrames) mixLaneFrames<kLaneFrames>(group, f);
      for (; f < end; ++f) mixLaneFrames<1>(group, f);
    }
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace tolvane
HWY_AFTER_NAMESPACE();
#endif
#endif
