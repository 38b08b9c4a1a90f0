#include "kernel_forms.h"

#include <cstring>

namespace tolvane::test {

extern const MixKernels kWideMixKernels;

std::vector<const MixKernels*> everyForm() {
  std::vector<const MixKernels*> all;
  for (const MixKernels* form : allMixKernels().forms) {
    if (form != nullptr) all.push_back(form);
  }
  all.push_back(&kWideMixKernels);
  return all;
}

void KernelForms::expectPlainBits(RoutesInMemory cycle) {
  RoutesInMemory plain = cycle;
  cycle.mix(*GetParam());
  plain.mixInPlainOrder();
  const std::size_t bytes = plain.memory().size() * sizeof(float);
  EXPECT_EQ(std::memcmp(cycle.memory().data(), plain.memory().data(), bytes), 0);
}

}  // namespace tolvane::test
