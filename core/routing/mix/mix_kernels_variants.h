// All variants that are built. mix_kernels.cpp decides which of them runs.
#pragma once

#include "core/routing/mix/mix_kernels.h"

namespace tolvane {

extern const MixKernels kBaselineMixKernels;
extern const MixKernels kAvx2MixKernels;    // x86-64 only
extern const MixKernels kAvx512MixKernels;  // x86-64 only

}  // namespace tolvane
