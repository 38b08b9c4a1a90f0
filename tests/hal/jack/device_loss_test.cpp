#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

class JackDeviceLoss : public JackFixture {
 protected:
  JackDeviceLoss() { startServer(); }

  JackSessionClient client_{2, 2, straightRoutes(2)};
};

TEST_F(JackDeviceLoss, IsToldWhenTheDevicesClientGoes) {
  std::unique_ptr<hal::Session> session;
  {
    JackTestClient card = JackTestClient::card("card", 2, 2);
    card.activate();
    session = start("card", client_);
    EXPECT_TRUE(client_.alive);
  }
  EXPECT_TRUE(eventually([this] { return !client_.alive; }));
}

TEST_F(JackDeviceLoss, IsToldWhenOnePortOfTheDeviceGoes) {
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  const auto session = start("card", client_);
  card.unregisterSignalPort(1);
  EXPECT_TRUE(eventually([this] { return !client_.alive; }));
}

TEST_F(JackDeviceLoss, IsNotToldWhenAnotherDeviceGoes) {
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  const auto session = start("card", client_);
  {
    JackTestClient other = JackTestClient::card("other", 2, 2);
    other.activate();
  }
  const std::uint64_t before = client_.cycles;
  EXPECT_TRUE(eventually([&] { return client_.cycles > before + 20; }));
  EXPECT_TRUE(client_.alive);
}

}  // namespace
}  // namespace tolvane::test
