// The loops of mix_kernels.h for vectors of kWidth floats. Included by one source file for each instruction
// set, compiled with that set's flags: so everything here has internal linkage, and nothing of the standard
// library's inline code is used, lest a copy with the wrong instructions serve the whole program.
#pragma once

#include "core/mix/lane_kernels_impl.h"
#include "core/mix/mix_kernels.h"
#include "core/mix/planar_kernels_impl.h"
#include "core/mix/tile_kernels_impl.h"

namespace tolvane {
namespace {

/// For constants alone: nothing of a form may run before it is known that the processor has its instructions.
consteval MixKernels mixKernelsNamed(const char* name) noexcept {
  return {name, kWidth, kLoadsMasked, clear, scalePlanar, mixPlanar, mixTiles, mixLanes};
}

}  // namespace
}  // namespace tolvane
