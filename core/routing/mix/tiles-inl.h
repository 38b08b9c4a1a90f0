// The loop over tiles: transposes the channels of interleaved inputs into rows, four at once, sums the rows,
// and transposes the sums into interleaved outputs.
#if defined(TOLVANE_TILES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TOLVANE_TILES_INL_H
#undef TOLVANE_TILES_INL_H
#else
#define TOLVANE_TILES_INL_H
#endif

#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/planar-inl.h"
#include "core/routing/mix/vectors-inl.h"

#if HWY_TARGET != HWY_SCALAR  // one float is no vector of channels
HWY_BEFORE_NAMESPACE();
namespace tolvane {
namespace HWY_NAMESPACE {

/// Loads four floats from each of as many frames as the vector has blocks of four. The first lies at `from`,
/// the others `step` floats apart.
template <class D>
HWY_INLINE hn::Vec<D> loadBlocks(D d, const float* from, std::ptrdiff_t step) noexcept {
  if constexpr (hn::MaxLanes(D()) == 4) {
    return hn::LoadU(d, from);
  } else {
    const hn::Half<D> half;
    constexpr auto kBlocks = static_cast<std::ptrdiff_t>(hn::MaxLanes(half) / 4);
    return hn::Combine(d, loadBlocks(half, from + kBlocks * step, step), loadBlocks(half, from, step));
  }
}

/// The inverse of loadBlocks().
template <class D>
HWY_INLINE void storeBlocks(D d, float* to, std::ptrdiff_t step, hn::Vec<D> v) noexcept {
  if constexpr (hn::MaxLanes(D()) == 4) {
    hn::StoreU(v, d, to);
  } else {
    const hn::Half<D> half;
    constexpr auto kBlocks = static_cast<std::ptrdiff_t>(hn::MaxLanes(half) / 4);
    storeBlocks(half, to, step, hn::LowerHalf(half, v));
    storeBlocks(half, to + kBlocks * step, step, hn::UpperHalf(half, v));
  }
}

/// Swaps frames and channels within each block of four frames of four channels.
HWY_INLINE void transposeBlocks(Vector (&r)[4]) noexcept {
  const Floats d;
  const hn::RepartitionToWide<Floats> pairs;
  const auto a = hn::BitCast(pairs, hn::InterleaveLower(d, r[0], r[1]));
  const auto b = hn::BitCast(pairs, hn::InterleaveUpper(d, r[0], r[1]));
  const auto c = hn::BitCast(pairs, hn::InterleaveLower(d, r[2], r[3]));
  const auto e = hn::BitCast(pairs, hn::InterleaveUpper(d, r[2], r[3]));
  r[0] = hn::BitCast(d, hn::InterleaveLower(pairs, a, c));
  r[1] = hn::BitCast(d, hn::InterleaveUpper(pairs, a, c));
  r[2] = hn::BitCast(d, hn::InterleaveLower(pairs, b, e));
  r[3] = hn::BitCast(d, hn::InterleaveUpper(pairs, b, e));
}

/// Transposes kWidth frames of the four channels at `from` into four rows.
HWY_INLINE void gatherFour(const float* from, std::ptrdiff_t stride, float* rows) noexcept {
  const Floats d;
  Vector r[4];
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) r[i] = loadBlocks(d, from + i * stride, 4 * stride);
  transposeBlocks(r);
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) hn::StoreU(r[i], d, rows + i * kTileFrames);
}

HWY_INLINE void gatherOne(const float* from, std::ptrdiff_t stride, float* row) noexcept {
  float samples[kWidth];
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < kWidth; ++i) samples[i] = from[i * stride];
  hn::StoreU(hn::LoadU(Floats(), samples), Floats(), row);
}

/// Splits kWidth stereo frames into two rows.
HWY_INLINE void gatherStereo(const float* from, float* rows) noexcept {
  const Floats d;
  Vector left;
  Vector right;
  hn::LoadInterleaved2(d, from, left, right);
  hn::StoreU(left, d, rows);
  hn::StoreU(right, d, rows + kTileFrames);
}

/// Splits kWidth frames of three channels into three rows.
HWY_INLINE void gatherThree(const float* from, float* rows) noexcept {
  const Floats d;
  Vector r[3];
  hn::LoadInterleaved3(d, from, r[0], r[1], r[2]);
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 3; ++i) hn::StoreU(r[i], d, rows + i * kTileFrames);
}

HWY_INLINE void gather(const GatherGroup& group, std::int64_t frame, std::int64_t count) noexcept {
  const std::ptrdiff_t stride = group.stride;
  const float* from = group.data + frame * stride;
  for (std::int64_t f = 0; f < count; f += kWidth, from += kWidth * stride) {
    float* const rows = group.rows + f;
    if (group.width == 1) {
      gatherOne(from, stride, rows);
    } else if (group.width == 2) {
      gatherStereo(from, rows);
    } else if (group.width == 3) {
      gatherThree(from, rows);
    } else {
      gatherFour(from, stride, rows);
    }
  }
}

/// Transposes kWidth frames of four rows into the four channels at `to`.
HWY_INLINE void scatterFour(const float* const (&rows)[4], std::int64_t f, float* to,
                            std::ptrdiff_t stride) noexcept {
  const Floats d;
  Vector r[4];
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) r[i] = hn::LoadU(d, rows[i] + f);
  transposeBlocks(r);
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) storeBlocks(d, to + i * stride, 4 * stride, r[i]);
}

HWY_INLINE void scatter(const ScatterGroup& group, std::int64_t frame, std::int64_t count) noexcept {
  const Floats d;
  const std::ptrdiff_t stride = group.stride;
  const float* const(&rows)[4] = group.rows;
  float* to = group.data + frame * stride;
  for (std::int64_t f = 0; f < count; f += kWidth, to += kWidth * stride) {
    if (group.width == 2) {
      hn::StoreInterleaved2(hn::LoadU(d, rows[0] + f), hn::LoadU(d, rows[1] + f), d, to);
    } else if (group.width == 3) {
      hn::StoreInterleaved3(hn::LoadU(d, rows[0] + f), hn::LoadU(d, rows[1] + f), hn::LoadU(d, rows[2] + f),
                            d, to);
    } else {
      scatterFour(rows, f, to, stride);
    }
  }
}

inline HWY_ATTR void mixTiles(const TileWork& work, std::int64_t frames) noexcept {
  const std::int64_t count = frames < kTileFrames ? kWidth : kTileFrames;
  for (std::int64_t next = 0; next < frames; next += count) {
    // The last tile ends with the last frame. It may overlap the previous tile, and then computes the same
    // samples again.
    const std::int64_t frame = HWY_MIN(next, frames - count);
    for (std::int32_t g = 0; g < work.gatherCount; ++g) gather(work.gathers[g], frame, count);
    for (std::int32_t t = 0; t < work.targetCount; ++t) sum(work.targets[t], frame, count);
    for (std::int32_t g = 0; g < work.scatterCount; ++g) scatter(work.scatters[g], frame, count);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace tolvane
HWY_AFTER_NAMESPACE();
#endif
#endif
