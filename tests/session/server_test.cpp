// PipeWire ends under Tolvane and the session manager, and all of it is started again.
#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

TEST_F(SessionTest, IsHeardAgainWhenPipeWireIsRestarted) {
  route();
  for (int round = 0; round < 3; ++round) {
    rig_.reset();
    session_.killServer();
    session_.startServer();
    rig_.emplace(kCard, routes_);
    EXPECT_TRUE(rig_->settle());
  }
  const std::string once =
      "tolvanectl: card: is gone; waiting for it to come back\ntolvanectl: card: is back\n";
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n" + once + once + once);
}

}  // namespace
}  // namespace tolvane::test
