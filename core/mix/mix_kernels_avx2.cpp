// The loops in the form of processors with AVX2: vectors of 8 floats.
#include "core/mix/mix_kernels_forms.h"
#include "core/mix/mix_kernels_impl.h"

namespace tolvane {

constinit const MixKernels kAvx2MixKernels = mixKernelsNamed("avx2");

}  // namespace tolvane
