// The session manager dies.
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

}  // namespace
}  // namespace tolvane::test
