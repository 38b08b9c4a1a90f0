// Which variant of the mixing loops is chosen, and when.
#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/routing/mix/mix_kernels.h"

#if defined(__x86_64__)
// What the compiler's library knows of the processor. The layout is part of its ABI.
extern "C" struct {
  unsigned vendor;
  unsigned type;
  unsigned subtype;
  unsigned features[1];
} __cpu_model;
#endif

namespace tolvane::test {
namespace {

struct Choice {
  const MixKernels* variant = &mixKernels();
};

// Constructed before the objects of any other file.
[[gnu::init_priority(101)]] const Choice earlyChoice;

TEST(KernelChoice, IsTheSameBeforeAnyFilesConstructors) {
  ASSERT_NE(earlyChoice.variant, nullptr);
  EXPECT_EQ(earlyChoice.variant, allMixKernels().variants[0]);
}

#if defined(__x86_64__)
std::vector<std::string> variantNames() {
  std::vector<std::string> names;
  for (const MixKernels* variant : allMixKernels().variants) {
    if (variant != nullptr) names.emplace_back(variant->name);
  }
  return names;
}

/// Pretends that the processor has or lacks the feature of this number.
void pretend(unsigned feature, bool has) {
  const unsigned bit = 1U << feature;
  __cpu_model.features[0] = has ? __cpu_model.features[0] | bit : __cpu_model.features[0] & ~bit;
}

TEST(KernelChoice, Avx512NeedsEveryFeatureThatItIsCompiledFor) {
  constexpr unsigned kAvx512Features[] = {15, 20, 22};  // F, VL, DQ
  const unsigned found = __cpu_model.features[0];
  for (const unsigned feature : kAvx512Features) pretend(feature, true);
  EXPECT_THAT(variantNames(), testing::Contains("avx512"));
  for (const unsigned feature : kAvx512Features) {
    pretend(feature, false);
    EXPECT_THAT(variantNames(), testing::Not(testing::Contains("avx512"))) << feature;
    pretend(feature, true);
  }
  __cpu_model.features[0] = found;
}
#endif

}  // namespace
}  // namespace tolvane::test
