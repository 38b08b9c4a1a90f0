#include "hal/support/sample_memory.h"

#include <algorithm>
#include <cstdint>

#include <gtest/gtest.h>

namespace tolvane::hal {
namespace {

TEST(SampleMemory, IsSilentAndBeginsOnACacheLine) {
  for (const std::size_t samples : {1U, 15U, 16U, 17U, 100'000U}) {
    const SampleMemory memory = allocateSamples(samples * sizeof(float));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory.get()) % kCacheLineBytes, 0U) << samples;
    EXPECT_EQ(std::count(memory.get(), memory.get() + samples, 0.0F), static_cast<std::ptrdiff_t>(samples));
  }
}

TEST(SampleMemory, OfNoSamples) {
  EXPECT_TRUE(allocateSamples(0));
}

TEST(WholeCacheLines, HoldTheBytes) {
  EXPECT_EQ(wholeCacheLines(0), 0U);
  EXPECT_EQ(wholeCacheLines(1), 64U);
  EXPECT_EQ(wholeCacheLines(64), 64U);
  EXPECT_EQ(wholeCacheLines(65), 128U);
}

}  // namespace
}  // namespace tolvane::hal
