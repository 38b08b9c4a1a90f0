// The user chooses another default device in the desktop's settings.
#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

/// The position of the device in tolvanectl's list; npos if it is not there.
std::size_t placeOf(const std::string& device) {
  return runProgram({"devices"}).out.find("  " + device + "  ");
}

void choose(PipeWireClient& client, const std::string& sink) {
  ASSERT_EQ(runShell("wpctl set-default " + std::to_string(client.nodeId(sink))), 0);
  ASSERT_TRUE(eventually([&] { return client.defaultSink() == sink; }));
}

TEST_F(SessionTest, TheDefaultDeviceComesFirstInTheList) {
  choose(rig_->client(), "other.sink");
  EXPECT_LT(placeOf("other"), placeOf("card"));
  choose(rig_->client(), "card.sink");
  EXPECT_LT(placeOf("card"), placeOf("other"));
  EXPECT_NE(placeOf("other"), std::string::npos);
}

TEST_F(SessionTest, AnotherDefaultDeviceCostsARunningOneNoSample) {
  choose(rig_->client(), "card.sink");
  route();
  for (int round = 0; round < 5; ++round) {
    choose(rig_->client(), "other.sink");
    choose(rig_->client(), "card.sink");
  }
  ASSERT_TRUE(rig_->waitForMuch());
  EXPECT_TRUE(rig_->isRight());
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
}

}  // namespace
}  // namespace tolvane::test
