// The loops for processors with AVX512: vectors of 16 floats.
#include "core/routing/mix/mix_kernels_impl.h"
#include "core/routing/mix/mix_kernels_variants.h"

namespace tolvane {

constinit const MixKernels kAvx512MixKernels = mixKernelsNamed("avx512");

}  // namespace tolvane
