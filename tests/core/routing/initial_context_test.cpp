// The routing context as a start makes it, before anything is published.
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/routing/routing_context.h"

namespace tolvane::test {
namespace {

TEST(InitialContext, HasALiveAndBothBuffersEmpty) {
  const IOProcContext context = initialContext(18, 20);
  EXPECT_EQ(context.activeBuf, 0);
  EXPECT_EQ(context.countA, 0);
  EXPECT_EQ(context.countB, 0);
}

TEST(InitialContext, HasTheDevicesChannelCounts) {
  const IOProcContext context = initialContext(18, 20);
  EXPECT_EQ(context.inputChannelCount, 18);
  EXPECT_EQ(context.outputChannelCount, 20);
}

TEST(InitialContext, EveryEntryIsHarmless) {
  const IOProcContext context = initialContext(18, 20);
  for (const auto* buffer : {&context.patchesA, &context.patchesB}) {
    for (const PatchEntry& entry : *buffer) {
      EXPECT_EQ(entry.src, -1);
      EXPECT_EQ(entry.dst, -1);
      EXPECT_EQ(entry.gain, 1.0F);
    }
  }
}

TEST(InitialContext, KeepsZeroAndTheLargestCount) {
  const IOProcContext context = initialContext(0, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(context.inputChannelCount, 0);
  EXPECT_EQ(context.outputChannelCount, 2147483647);
}

TEST(InitialContextDeathTest, CountBeyond32BitsEndsTheProcess) {
  EXPECT_DEATH((void)initialContext(2147483648, 1),
               "^tolvane: fatal: input channel count of the device is beyond 32 bits\n$");
  EXPECT_DEATH((void)initialContext(1, 2147483648),
               "^tolvane: fatal: output channel count of the device is beyond 32 bits\n$");
  EXPECT_DEATH((void)initialContext(-2147483649, 1),
               "^tolvane: fatal: input channel count of the device is beyond 32 bits\n$");
}

TEST(ContextLayout, IsTheOneThatTheTracePrints) {
  EXPECT_EQ(sizeof(IOProcContext), 1556U);
  EXPECT_EQ(sizeof(PatchEntry), 12U);
  EXPECT_EQ(kMaxPatchEntries, 64);
}

}  // namespace
}  // namespace tolvane::test
