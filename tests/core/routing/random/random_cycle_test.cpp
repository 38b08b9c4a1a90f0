// Random cycles with anything that a device may hand to the callback, in every variant of the mixing loops.
// The memory must end up as in the reference order.
#include <iostream>
#include <string>

#include <gtest/gtest.h>

#include "core/routing/mix/mix_kernels.h"
#include "cycle_check.h"

namespace tolvane::test {
namespace {

constexpr std::uint64_t kFirstSeed = 1;
constexpr std::uint64_t kCycles = 5000;

class RandomCycles : public testing::TestWithParam<const MixKernels*> {
 protected:
  void SetUp() override { useMixKernels(*GetParam()); }
  void TearDown() override { useMixKernels(*allMixKernels().variants[0]); }
};

std::vector<const MixKernels*> formsOfThisProcessor() {
  std::vector<const MixKernels*> variants;
  for (const MixKernels* variant : allMixKernels().variants) {
    if (variant != nullptr) variants.push_back(variant);
  }
  return variants;
}

INSTANTIATE_TEST_SUITE_P(All, RandomCycles, testing::ValuesIn(formsOfThisProcessor()),
                         [](const auto& variant) { return variant.param->name; });

// `cycle_soak` runs any number of them.
TEST_P(RandomCycles, AgreeWithTheReferenceToTheBit) {
  std::cout << kCycles << " cycles from seed " << kFirstSeed << '\n';
  CycleCheck check;
  for (std::uint64_t seed = kFirstSeed; seed < kFirstSeed + kCycles; ++seed)
    ASSERT_EQ(check.differenceOf(seed), "") << "seed " << seed;
}

}  // namespace
}  // namespace tolvane::test
