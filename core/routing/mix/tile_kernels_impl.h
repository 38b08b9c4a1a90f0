// The loop over tiles: transposes the channels of interleaved inputs into rows, four at once, sums the rows,
// and transposes the sums into interleaved outputs. The rules of mix_kernels_impl.h hold here.
#pragma once

#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/mix_vectors_impl.h"

namespace tolvane {
namespace {

/// Loads four floats from each of Width / 4 frames that are `step` floats apart, the first at `from`.
template <std::size_t Width>
__attribute__((always_inline)) inline Vector<Width> loadQuarters(const float* from,
                                                                 std::ptrdiff_t step) noexcept {
  if constexpr (Width == 4) {
    return load<4>(from);
  } else {
    return join(loadQuarters<Width / 2>(from, step),
                loadQuarters<Width / 2>(from + static_cast<std::ptrdiff_t>(Width / 8) * step, step));
  }
}

/// The inverse of loadQuarters().
template <std::size_t Width>
__attribute__((always_inline)) inline void storeQuarters(float* to, std::ptrdiff_t step,
                                                         Vector<Width> v) noexcept {
  if constexpr (Width == 4) {
    store<4>(to, v);
  } else {
    storeQuarters<Width / 2>(to, step, lowHalf(v));
    storeQuarters<Width / 2>(to + static_cast<std::ptrdiff_t>(Width / 8) * step, step, highHalf(v));
  }
}

/// Transposes kWidth frames of the four channels at `from` into four rows.
__attribute__((always_inline)) inline void gatherFour(const float* from, std::ptrdiff_t stride,
                                                      float* rows) noexcept {
  Vector<kWidth> r[4];
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) r[i] = loadQuarters<kWidth>(from + i * stride, 4 * stride);
  transposeQuarters(r);
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) store<kWidth>(rows + i * kTileFrames, r[i]);
}

__attribute__((always_inline)) inline void gatherOne(const float* from, std::ptrdiff_t stride,
                                                     float* row) noexcept {
  Vector<kWidth> v;
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < kWidth; ++i) v[i] = from[i * stride];
  store<kWidth>(row, v);
}

template <std::int64_t Count>
__attribute__((always_inline)) inline void gather(const GatherGroup& group, std::int64_t frame) noexcept {
  const std::ptrdiff_t stride = group.stride;
  const float* from = group.data + frame * stride;
  float* const rows = group.rows;
  for (std::int64_t f = 0; f < Count; f += kWidth, from += kWidth * stride) {
    if (group.width == 4) {
      gatherFour(from, stride, rows + f);
    } else {
      gatherOne(from, stride, rows + f);
    }
  }
}

template <std::int64_t Count>
__attribute__((always_inline)) inline void sum(const MixTarget& target, std::int64_t frame) noexcept {
  constexpr std::int64_t kVectors = Count / kWidth;
  Vector<kWidth> sums[static_cast<std::size_t>(kVectors)] = {};
  const MixSource* source = target.sources;
  const MixSource* const end = source + target.sourceCount;
  do {
    const float* const from = source->data + (frame & source->frameMask);
    const float gain = source->gain;
    TOLVANE_UNROLLED
    for (std::int64_t v = 0; v < kVectors; ++v) sums[v] += load<kWidth>(from + v * kWidth) * gain;
  } while (++source != end);
  float* const to = target.data + (frame & target.frameMask);
  TOLVANE_UNROLLED
  for (std::int64_t v = 0; v < kVectors; ++v) store<kWidth>(to + v * kWidth, sums[v]);
}

__attribute__((always_inline)) inline void scatterFour(const float* const (&rows)[4], std::int64_t f,
                                                       float* to, std::ptrdiff_t stride) noexcept {
  Vector<kWidth> r[4];
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) r[i] = load<kWidth>(rows[i] + f);
  transposeQuarters(r);
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < 4; ++i) storeQuarters<kWidth>(to + i * stride, 4 * stride, r[i]);
}

__attribute__((always_inline)) inline void scatterOne(const float* row, float* to,
                                                      std::ptrdiff_t stride) noexcept {
  const auto v = load<kWidth>(row);
  TOLVANE_UNROLLED
  for (std::ptrdiff_t i = 0; i < kWidth; ++i) to[i * stride] = v[i];
}

template <std::int64_t Count>
__attribute__((always_inline)) inline void scatter(const ScatterGroup& group, std::int64_t frame) noexcept {
  const std::ptrdiff_t stride = group.stride;
  float* to = group.data + frame * stride;
  for (std::int64_t f = 0; f < Count; f += kWidth, to += kWidth * stride) {
    if (group.width == 4) {
      scatterFour(group.rows, f, to, stride);
    } else {
      scatterOne(group.rows[0] + f, to, stride);
    }
  }
}

template <std::int64_t Count>
inline void mixTile(const TileWork& work, std::int64_t frame) noexcept {
  for (std::int32_t g = 0; g < work.gatherCount; ++g) gather<Count>(work.gathers[g], frame);
  for (std::int32_t t = 0; t < work.targetCount; ++t) sum<Count>(work.targets[t], frame);
  for (std::int32_t g = 0; g < work.scatterCount; ++g) scatter<Count>(work.scatters[g], frame);
}

/// The last tile ends with the last frame. It may overlap the previous tile, and then computes the same
/// samples again.
template <std::int64_t Count>
inline void mixTilesOf(const TileWork& work, std::int64_t frames) noexcept {
  std::int64_t frame = 0;
  for (; frame + Count <= frames; frame += Count) mixTile<Count>(work, frame);
  if (frame < frames) mixTile<Count>(work, frames - Count);
}

inline void mixTiles(const TileWork& work, std::int64_t frames) noexcept {
  if (frames >= kTileFrames) {
    mixTilesOf<kTileFrames>(work, frames);
  } else {
    mixTilesOf<kWidth>(work, frames);
  }
}

}  // namespace
}  // namespace tolvane
