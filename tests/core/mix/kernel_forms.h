#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/mix/mix_kernels.h"
#include "routes_in_memory.h"

namespace tolvane::test {

/// Every form that this processor runs, and one that puts the widest vectors together from those it has.
std::vector<const MixKernels*> everyForm();

inline std::string formName(const testing::TestParamInfo<const MixKernels*>& form) {
  return form.param->name;
}

/// A test that is run for each form of the mixing loops.
class KernelForms : public testing::TestWithParam<const MixKernels*> {
 protected:
  /// Mixes the same cycle in both orders, in two copies of the memory, and compares all of it.
  static void expectPlainBits(RoutesInMemory cycle);
};

}  // namespace tolvane::test
