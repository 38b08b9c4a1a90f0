// The forms that are built; which of them runs is decided in mix_kernels.cpp.
#pragma once

#include "core/mix/mix_kernels.h"

namespace tolvane {

extern const MixKernels kBaselineMixKernels;
extern const MixKernels kAvx2MixKernels;    // x86-64 only
extern const MixKernels kAvx512MixKernels;  // x86-64 only

}  // namespace tolvane
