// The loops for vectors of 16 floats, on any processor: they compute what a processor with such vectors
// would.
#define TOLVANE_MIX_WIDTH 16
#include "core/routing/mix/mix_kernels_impl.h"

namespace tolvane::test {

extern const MixKernels kWideMixKernels;
const MixKernels kWideMixKernels = mixKernelsNamed("wide");

}  // namespace tolvane::test
