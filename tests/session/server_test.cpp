// PipeWire ends under Tolvane and the session manager, and all of it is started again.
#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

class SessionServerRestart : public SessionReturn {};

TEST_P(SessionServerRestart, IsHeardAgain) {
  route();
  std::string said = "tolvanectl: routing on card\n";
  for (int round = 1; round <= 3; ++round) {
    rig_.reset();
    session_.killServer();
    expectSaid(kGone, round, "PipeWire's end");
    session_.startServer();
    expectSaid(kBack, round, "PipeWire's start");
    expectHeardAgain("that", [this] { rig_.emplace(kCard, routes_); });
    said += std::string(kGone) + kBack;
  }
  EXPECT_EQ(messages(), said);
}

INSTANTIATE_TEST_SUITE_P(Paces, SessionServerRestart, kSessionPaces, sessionPaceName);

}  // namespace
}  // namespace tolvane::test
