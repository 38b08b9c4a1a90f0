// The session manager dies and is started again.
#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

TEST_F(SessionTest, KillingTheManagerCostsNoSample) {
  route();
  session_.killManager();
  ASSERT_TRUE(rig_->waitForMuch());
  EXPECT_TRUE(rig_->isRight());
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
}

TEST_F(SessionTest, StartsAndStopsWithoutAManager) {
  session_.killManager();
  route();
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
  EXPECT_EQ(rig_->client().linkCount(), 9U);  // the rig's own
}

class SessionManagerRestart : public SessionReturn {};

// A manager that starts suspends every node, and PipeWire before 1.0 does not let all links of a suspended
// node carry audio again.
TEST_P(SessionManagerRestart, IsHeardAgain) {
  route();
  for (int round = 0; round < 3; ++round) {
    session_.killManager();
    session_.startManager();
    expectHeardAgain("the manager's start", [this] { rig_.emplace(kCard, routes_); });
  }
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
}

INSTANTIATE_TEST_SUITE_P(Paces, SessionManagerRestart, kSessionPaces, sessionPaceName);

}  // namespace
}  // namespace tolvane::test
