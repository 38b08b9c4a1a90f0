// The loops for processors with AVX2: vectors of 8 floats.
#include "core/routing/mix/mix_kernels_impl.h"
#include "core/routing/mix/mix_kernels_variants.h"

namespace tolvane {

constinit const MixKernels kAvx2MixKernels = mixKernelsNamed("avx2");

}  // namespace tolvane
