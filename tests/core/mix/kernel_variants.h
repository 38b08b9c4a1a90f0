#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/mix/mix_kernels.h"
#include "routes_in_memory.h"

namespace tolvane::test {

/// Every form that this processor runs, and one whose widest vectors are emulated with the processor's own.
std::vector<const MixKernels*> everyForm();

inline std::string formName(const testing::TestParamInfo<const MixKernels*>& form) {
  return form.param->name;
}

/// A test that runs once for each form of the mixing loops.
class KernelForms : public testing::TestWithParam<const MixKernels*> {
 protected:
  /// Mixes the same cycle with this form and in the plain order, in two copies of the memory, and compares
  /// all of it.
  static void expectPlainBits(RoutesInMemory cycle);
};

}  // namespace tolvane::test
