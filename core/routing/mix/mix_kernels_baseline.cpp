// The loops for every processor of the architecture: vectors of 4 floats.
#include "core/routing/mix/mix_kernels_impl.h"
#include "core/routing/mix/mix_kernels_variants.h"

namespace tolvane {

constinit const MixKernels kBaselineMixKernels = mixKernelsNamed("baseline");

}  // namespace tolvane
