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

/// Expects that the variant is there with all these features, and not without any one of them.
void expectNeedsEach(const char* variant, const std::vector<unsigned>& features) {
  const unsigned found = __cpu_model.features[0];
  for (const unsigned feature : features) pretend(feature, true);
  EXPECT_THAT(variantNames(), testing::Contains(variant));
  for (const unsigned feature : features) {
    pretend(feature, false);
    EXPECT_THAT(variantNames(), testing::Not(testing::Contains(variant))) << feature;
    pretend(feature, true);
  }
  __cpu_model.features[0] = found;
}

// SSSE3, SSE4.2, AVX2, FMA, BMI, BMI2, AES, PCLMUL
const std::vector<unsigned> kAvx2Features = {6, 8, 10, 14, 16, 17, 18, 19};
// F, VL, BW, DQ, CD
const std::vector<unsigned> kAvx512Features = {15, 20, 21, 22, 23};

TEST(KernelChoice, Avx2NeedsEveryFeatureThatItIsCompiledFor) {
  expectNeedsEach("AVX2", kAvx2Features);
}

TEST(KernelChoice, Avx512NeedsEveryFeatureThatItIsCompiledFor) {
  std::vector<unsigned> features = kAvx2Features;
  features.insert(features.end(), kAvx512Features.begin(), kAvx512Features.end());
  expectNeedsEach("AVX3", features);
}
#endif

}  // namespace
}  // namespace tolvane::test
