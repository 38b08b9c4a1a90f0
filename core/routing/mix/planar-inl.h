// The loop that sums channels whose frames lie side by side: planar buffers, and the rows of a tile.
#if defined(TOLVANE_PLANAR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TOLVANE_PLANAR_INL_H
#undef TOLVANE_PLANAR_INL_H
#else
#define TOLVANE_PLANAR_INL_H
#endif

#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tolvane {
namespace HWY_NAMESPACE {

/// Fills `Count` vectors of the target, from `offset` frames after `first` on.
template <std::size_t Count, class D>
HWY_INLINE void sumVectors(D d, const MixTarget& target, std::int64_t first, std::int64_t offset) noexcept {
  constexpr auto kLanes = hn::MaxLanes(D());
  hn::Vec<D> sums[Count];
  TOLVANE_UNROLLED
  for (std::size_t v = 0; v < Count; ++v) sums[v] = hn::Zero(d);
  const MixSource* source = target.sources;
  const MixSource* const end = source + target.sourceCount;
  do {
    const float* const from = source->data + (first & source->frameMask) + offset;
    const auto gain = hn::Set(d, source->gain);
    TOLVANE_UNROLLED
    for (std::size_t v = 0; v < Count; ++v)
      sums[v] = hn::Add(sums[v], hn::Mul(hn::LoadU(d, from + v * kLanes), gain));
  } while (++source != end);
  float* const to = target.data + (first & target.frameMask) + offset;
  TOLVANE_UNROLLED
  for (std::size_t v = 0; v < Count; ++v) hn::StoreU(sums[v], d, to + v * kLanes);
}

/// Frames per step: as many vectors as hide the time of an addition.
inline constexpr std::int64_t kStepFrames = HWY_MIN(4 * kWidth, kTileFrames);

/// Fills `frames` frames of the target, from `first` on. If it or a source is a row, no more than a row.
HWY_INLINE void sum(const MixTarget& target, std::int64_t first, std::int64_t frames) noexcept {
  constexpr std::size_t kVectors = kStepFrames / kWidth;
  std::int64_t f = 0;
  for (; f + kStepFrames <= frames; f += kStepFrames) sumVectors<kVectors>(Floats(), target, first, f);
  for (; f + kWidth <= frames; f += kWidth) sumVectors<1>(Floats(), target, first, f);
  for (; f < frames; ++f) sumVectors<1>(hn::CappedTag<float, 1>(), target, first, f);
}

inline HWY_ATTR void scalePlanar(float* target, const float* source, float gain,
                                 std::int64_t frames) noexcept {
  const MixSource only = {source, kWholeChannel, gain};
  sum({target, kWholeChannel, &only, 1}, 0, frames);
}

inline HWY_ATTR void mixPlanar(const MixTarget& target, std::int64_t frames) noexcept {
  sum(target, 0, frames);
}

}  // namespace HWY_NAMESPACE
}  // namespace tolvane
HWY_AFTER_NAMESPACE();
#endif
