// The HAL is asked to find its devices early, whether it can or not.
#include "engine/device_prefetch.h"

#include "engine_fixture.h"
#include "support/captured_output.h"

namespace tolvane::test {
namespace {

class DevicePrefetchTest : public EngineTest {};

TEST_F(DevicePrefetchTest, IsOneCall) {
  prefetchDevices();
  EXPECT_THAT(hal_.calls(), testing::ElementsAre("AudioObjectSetPropertyData(1, pfch glob 0, 1)"));
}

TEST_F(DevicePrefetchTest, PrintsNothingAndChangesNoList) {
  const auto before = engine_.getAllDevices();
  EXPECT_THAT(outputLinesOf([] { prefetchDevices(); }), testing::IsEmpty());
  EXPECT_EQ(engine_.getAllDevices(), before);
}

}  // namespace
}  // namespace tolvane::test
