// The loops of mix_kernels.h for vectors of kWidth floats. One source file for each instruction set includes
// this file and is compiled with the set's flags. So everything here has internal linkage and uses no inline
// code of the standard library: else the linker could take a copy with the wrong instructions for the whole
// program.
#pragma once

#include "core/routing/mix/lane_kernels_impl.h"
#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/planar_kernels_impl.h"
#include "core/routing/mix/tile_kernels_impl.h"

namespace tolvane {
namespace {

/// Evaluated at compile time only: no code of a variant may run before the processor is known to have its
/// instructions.
consteval MixKernels mixKernelsNamed(const char* name) noexcept {
  return {name, kWidth, kLoadsMasked, clear, scalePlanar, mixPlanar, mixTiles, mixLanes};
}

}  // namespace
}  // namespace tolvane
