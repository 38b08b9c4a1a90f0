#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/routing/mix/mix_kernels.h"
#include "routes_in_memory.h"

namespace tolvane::test {

/// Every variant that this processor runs.
std::vector<const MixKernels*> everyVariant();

inline std::string variantName(const testing::TestParamInfo<const MixKernels*>& variant) {
  return variant.param->name;
}

/// A test that runs once for each variant of the mixing loops.
class KernelVariants : public testing::TestWithParam<const MixKernels*> {
 protected:
  /// Mixes the same cycle with this variant and in the reference order, in two copies of the memory, and
  /// compares all of it.
  static void expectReferenceBits(RoutesInMemory cycle);
};

}  // namespace tolvane::test
