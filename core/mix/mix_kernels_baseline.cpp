// The loops in the form of every processor of the architecture: vectors of 4 floats.
#include "core/mix/mix_kernels_forms.h"
#include "core/mix/mix_kernels_impl.h"

namespace tolvane {

constinit const MixKernels kBaselineMixKernels = mixKernelsNamed("baseline");

}  // namespace tolvane
