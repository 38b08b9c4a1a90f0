#include "kernel_variants.h"

#include <cstring>

namespace tolvane::test {

std::vector<const MixKernels*> everyVariant() {
  std::vector<const MixKernels*> all;
  for (const MixKernels* variant : allMixKernels().variants) {
    if (variant != nullptr) all.push_back(variant);
  }
  return all;
}

void KernelVariants::expectReferenceBits(RoutesInMemory cycle) {
  RoutesInMemory plain = cycle;
  cycle.mix(*GetParam());
  plain.mixInReferenceOrder();
  const std::size_t bytes = plain.memory().size() * sizeof(float);
  EXPECT_EQ(std::memcmp(cycle.memory().data(), plain.memory().data(), bytes), 0);
}

}  // namespace tolvane::test
