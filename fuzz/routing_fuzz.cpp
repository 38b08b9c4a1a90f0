// Runs an IO cycle that the bytes choose: any buffer lists, with or without overlaps, any routes and channel
// counts. In every variant of the mixing loops that the processor runs, the memory must end up as in the
// reference order.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "core/routing/mix/mix_kernels.h"
#include "core/routing/random/cycle_check.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

constexpr std::size_t kMostFloats = 1U << 12U;  // keeps the cycles short

std::vector<const MixKernels*> everyVariant() {
  std::vector<const MixKernels*> all;
  for (const MixKernels* variant : allMixKernels().variants) {
    if (variant != nullptr) all.push_back(variant);
  }
  return all;
}

void runCycle(std::span<const std::uint8_t> bytes) {
  static test::CycleCheck check;
  static const std::vector<const MixKernels*> variants = everyVariant();
  test::RandomCycleMaker maker(test::Choices(bytes), kMostFloats);
  const std::string difference = check.differenceOf(maker, variants);
  if (!difference.empty()) std::fprintf(stderr, "%s\n", difference.c_str());
  require(difference.empty());
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::runCycle({bytes, size});
  return 0;
}
