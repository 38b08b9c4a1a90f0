// The loops that move samples, compiled once for each instruction set (a Highway target). The processor
// decides once which of these variants runs. All variants give the same bits: sums start at positive zero and
// add the sources in order, and every product and every sum is rounded. There is no fused multiply-add.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane {

/// Floats in the widest vector of any variant.
inline constexpr std::int32_t kMaxVectorFloats = 16;

/// Frames in one row of a tile.
inline constexpr std::int64_t kTileFrames = 32;

/// Frame masks. Frame f of a channel lies at data[f & mask]: in a whole channel at f, in the row of a tile at
/// 0, because every tile uses the same row.
inline constexpr std::int64_t kWholeChannel = -1;
inline constexpr std::int64_t kTileRow = 0;

/// One input of a sum.
struct MixSource {
  const float* data;
  std::int64_t frameMask;
  float gain;
};

/// One output: the sum of its sources, of which there is at least one.
struct MixTarget {
  float* data;
  std::int64_t frameMask;
  const MixSource* sources;
  std::int32_t sourceCount;
};

/// `width` adjacent channels of an interleaved input, transposed into `width` contiguous rows.
struct GatherGroup {
  const float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::int32_t width;  // 1, or 2 or 3 if that is the stride, or 4
  float* rows;
};

/// `width` adjacent channels of an interleaved output, each filled from one row.
struct ScatterGroup {
  float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::int32_t width;  // 2 or 3 if that is the stride, or 4
  const float* rows[4];
};

/// The work for every tile, in this order.
struct TileWork {
  const GatherGroup* gathers;
  std::int32_t gatherCount;
  const MixTarget* targets;
  std::int32_t targetCount;
  const ScatterGroup* scatters;
  std::int32_t scatterCount;
};

/// At most one route for each lane of a group of adjacent outputs. All its inputs have the same distance from
/// their lanes. A lane without a route has gain 0.
struct LaneLayer {
  std::uintptr_t base;  // the address of lane 0 in frame 0; may lie outside the buffer if lane 0 has no route
  std::uint64_t lanes;  // bit i: lane i has a route
  alignas(64) float gains[kMaxVectorFloats];
};

/// vectorFloats adjacent channels of an interleaved output. Each is the sum of its lane in all layers, in
/// order.
struct LaneGroup {
  float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::ptrdiff_t sourceStride;  // of all layers
  const LaneLayer* layers;
  std::int32_t layerCount;
};

/// One variant of the loops. All [io-thread].
struct MixKernels {
  const char* name;
  std::int32_t vectorFloats;
  bool loadsMasked;  // whether a layer may have lanes without a route

  /// Multiplies `frames` frames of one planar source into `target`.
  void (*scalePlanar)(float* target, const float* source, float gain, std::int64_t frames) noexcept;

  /// Fills `frames` frames of a planar target with the sum of its planar sources.
  void (*mixPlanar)(const MixTarget& target, std::int64_t frames) noexcept;

  /// Does the work for `frames` frames, at least vectorFloats. May compute some frames twice.
  void (*mixTiles)(const TileWork& work, std::int64_t frames) noexcept;

  /// Sums the layers of each group into its channels, for `frames` frames. All groups have the same stride.
  void (*mixLanes)(const LaneGroup* groups, std::int32_t count, std::int64_t frames) noexcept;
};

/// The variant in use: the fastest that this processor runs. It is chosen before main(), so the IO thread
/// never chooses. Works before that, too. [any-thread]
[[nodiscard]] const MixKernels& mixKernels() noexcept;

/// Uses this variant from now on. For tests and benchmarks. [any-thread]
void useMixKernels(const MixKernels& variant) noexcept;

/// Variants, the fastest first, then null.
struct MixKernelList {
  const MixKernels* variants[4];
};

/// All variants that this processor runs. For tests and benchmarks. [any-thread]
[[nodiscard]] MixKernelList allMixKernels() noexcept;

}  // namespace tolvane
