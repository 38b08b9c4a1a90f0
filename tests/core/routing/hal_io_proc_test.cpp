// The callback as the HAL calls it: it always returns noErr. Also the cases in which it leaves the outputs as
// they are.
#include <cstring>

#include "routing_fixture.h"

namespace tolvane::test {
namespace {

using testing::Each;

class HalIOProcTest : public RoutingTest {
 protected:
  HalIOProcTest() {
    input_.add(2, 4, 1.0F);
    output_.add(2, 4, kStale);
    publish({{0, 0, 1.0F, true}, {1, 1, 0.5F, true}});
  }

  OSStatus call(void* clientData) {
    const AudioTimeStamp time{};
    return halIOProc(42, &time, input_.get(), &time, output_.get(), &time, clientData);
  }
};

TEST_F(HalIOProcTest, RoutesAndReturnsNoErr) {
  EXPECT_EQ(call(&context_), noErr);
  EXPECT_THAT(output_.channel(0, 0), Each(1.0F));
  EXPECT_THAT(output_.channel(0, 1), Each(0.5F));
}

TEST_F(HalIOProcTest, IgnoresDeviceAndTimeStamps) {
  EXPECT_EQ(halIOProc(0, nullptr, input_.get(), nullptr, output_.get(), nullptr, &context_), noErr);
  EXPECT_THAT(output_.channel(0, 1), Each(0.5F));
}

TEST_F(HalIOProcTest, LeavesTheOutputsWithoutClientData) {
  EXPECT_EQ(call(nullptr), noErr);
  EXPECT_THAT(output_.copyOf(0), Each(kStale));
}

TEST_F(HalIOProcTest, LeavesTheOutputsWithoutInputChannels) {
  for (const std::int32_t count : {0, -1}) {
    context_.inputChannelCount = count;
    EXPECT_EQ(call(&context_), noErr);
    EXPECT_THAT(output_.copyOf(0), Each(kStale));
  }
}

TEST_F(HalIOProcTest, LeavesTheOutputsWithoutOutputChannels) {
  for (const std::int32_t count : {0, -1}) {
    context_.outputChannelCount = count;
    EXPECT_EQ(call(&context_), noErr);
    EXPECT_THAT(output_.copyOf(0), Each(kStale));
  }
}

TEST_F(HalIOProcTest, ReturnsNoErrForAnEmptyOutputList) {
  const AudioTimeStamp time{};
  AudioBufferList none{};
  EXPECT_EQ(halIOProc(42, &time, input_.get(), &time, &none, &time, &context_), noErr);
}

TEST_F(HalIOProcTest, HasTheSignatureOfTheHalsCallback) {
  const AudioDeviceIOProc proc = &halIOProc;
  EXPECT_EQ(proc(42, nullptr, input_.get(), nullptr, output_.get(), nullptr, &context_), noErr);
  EXPECT_THAT(output_.channel(0, 0), Each(1.0F));
}

TEST_F(HalIOProcTest, NeverWritesToTheContext) {
  const IOProcContext before = context_;
  EXPECT_EQ(call(&context_), noErr);
  EXPECT_EQ(std::memcmp(&before, &context_, sizeof before), 0);
}

using HalIOProcDeathTest = HalIOProcTest;

TEST_F(HalIOProcDeathTest, NegativeRouteCountEndsTheProcess) {
  context_.countB = -1;
  EXPECT_DEATH((void)call(&context_), "^tolvane: fatal: the number of published routes is negative\n$");
}

TEST_F(HalIOProcTest, RouteCountBeyondTheRecordStopsAtItsEnd) {
  context_.countB = 1000;
  EXPECT_EQ(call(&context_), noErr);
  EXPECT_THAT(output_.channel(0, 0), Each(1.0F));
}

}  // namespace
}  // namespace tolvane::test
