// What the device tells of the thread of the cycles, which is libjack's own.
#include <sched.h>

#include "hal/hal_client.h"
#include "hal/jack/routing_fixture.h"

namespace tolvane::test {
namespace {

class JackIoThread : public JackRoutingFixture {};

TEST_F(JackIoThread, IsScheduledAsTheServerHasIt) {
  startServer();  // without real-time priority, so it gives none to its clients
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  route("card", {});
  settle(card);
  const auto scheduling =
      valueOf<TolvaneThreadScheduling>(engine_.currentDeviceID(), kTolvaneDevicePropertyIOThreadScheduling);
  EXPECT_EQ(scheduling.mPolicy, SCHED_OTHER);
  EXPECT_EQ(scheduling.mPriority, 0);
}

}  // namespace
}  // namespace tolvane::test
