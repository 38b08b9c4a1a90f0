// The loops in the form of processors with AVX512: vectors of 16 floats.
#include "core/mix/mix_kernels_forms.h"
#include "core/mix/mix_kernels_impl.h"

namespace tolvane {

constinit const MixKernels kAvx512MixKernels = mixKernelsNamed("avx512");

}  // namespace tolvane
