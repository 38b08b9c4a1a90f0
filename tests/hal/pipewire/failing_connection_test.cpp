// Connections that fail while the server works.
#include <cerrno>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"
#include "hal/promised_times.h"
#include "support/pipewire_proxy.h"
#include "support/stall_watch.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

/// A card whose driver reaches the server through a proxy. Signal and recorder connect directly.
class PipeWireFailingConnection : public ::testing::Test {
 protected:
  void start() {
    started_ = driver_->start(device_, client_);
    ASSERT_EQ(started_.status, noErr);
  }

  void waitUntilHeard() { EXPECT_TRUE(rig_.settle(25ms)); }

  const std::vector<PatchConnection> routes_ = straightThrough(4);
  PipeWireServer server_{{kCard}};
  PatchRig rig_{kCard, routes_};
  PipeWireProxy proxy_;
  std::unique_ptr<hal::Driver> driver_ = hal::makePipeWireDriver();
  hal::DeviceInfo device_ = onlyDevice(*driver_);
  RoutingClient client_{device_, routes_};
  hal::StartResult started_;
};

TEST_F(PipeWireFailingConnection, AStartWhoseLinksAreRefusedForItIsHeardInTime) {
  expectWithin(kReturnBound, [&] {
    started_.session.reset();
    const unsigned before = proxy_.connections();
    proxy_.misnumberNextMemory();
    const auto time = timeOf([&] {
      start();
      waitUntilHeard();
    });
    EXPECT_TRUE(proxy_.isDone());
    EXPECT_EQ(proxy_.connections(), before + 1);
    return time;
  });
}

TEST_F(PipeWireFailingConnection, ASessionWhoseNextLinksAreRefusedForItIsHeardAgainInTime) {
  start();
  ASSERT_TRUE(rig_.settle());
  expectWithin(kReturnBound, [&] {
    const unsigned before = proxy_.connections();
    proxy_.misnumberNextMemory();
    rig_.client().removeCard(kCard);
    rig_.client().addCard(kCard);
    rig_.linkCard(0);
    const auto time = timeOf([&] { waitUntilHeard(); });
    EXPECT_TRUE(proxy_.isDone());
    EXPECT_EQ(proxy_.connections(), before + 1);
    return time;
  });
  EXPECT_TRUE(client_.isAlive());
}

// The server may give a port's identifier to another port before it reads the request.
TEST_F(PipeWireFailingConnection, RequestsForLinksNameThePortsByTheirNames) {
  start();
  ASSERT_TRUE(rig_.settle());
  const std::vector<std::string> ports = proxy_.linkPorts();
  EXPECT_EQ(ports.size(), 16U);  // two ends of four inputs and four outputs
  for (const std::string& port : ports) EXPECT_NE(port.find('_'), std::string::npos) << port;
}

// The answer to the removal of a link that the server has refused.
TEST_F(PipeWireFailingConnection, AnErrorAboutAnObjectThatTheServerDoesNotKnowCostsNothing) {
  start();
  ASSERT_TRUE(rig_.settle());
  const unsigned before = proxy_.connections();
  proxy_.sendCoreError(-ENOENT);
  EXPECT_TRUE(eventually([&] { return proxy_.isDone(); }));
  EXPECT_EQ(onlyDevice(*driver_).uid, device_.uid);  // an answer that comes after the error
  EXPECT_TRUE(rig_.settle());
  EXPECT_TRUE(client_.isAlive());
  EXPECT_EQ(proxy_.connections(), before);
}

TEST_F(PipeWireFailingConnection, OneThatBreaksOffIsMadeAnewAndHeardAgainInTime) {
  start();
  ASSERT_TRUE(rig_.settle());
  expectWithin(kReturnBound, [&] {
    const unsigned before = proxy_.connections();
    proxy_.sendNonsense();
    return timeOf([&] {
      EXPECT_TRUE(eventually([&] { return proxy_.connections() == before + 1; }));
      waitUntilHeard();
    });
  });
  EXPECT_TRUE(eventually([&] { return client_.isAlive(); }));
  EXPECT_EQ(onlyDevice(*driver_).uid, device_.uid);
}

TEST_F(PipeWireFailingConnection, OneThatBreaksOffWhileNothingRunsIsMadeAnewForTheList) {
  proxy_.sendNonsense();
  EXPECT_TRUE(eventually([&] { return proxy_.isDone(); }));
  rig_.client().addCard({.name = "usb", .inputs = 1, .outputs = 1, .cardId = 901});
  EXPECT_EQ(plainDevices(*driver_, 2).size(), 2U);
}

// No server loses one. But a list that waits for it for good would never have the server's devices again.
TEST_F(PipeWireFailingConnection, OneThatLosesAnAnswerIsMadeAnewForTheList) {
  const unsigned before = proxy_.connections();
  proxy_.loseNextAnswer();
  EXPECT_TRUE(driver_->devices().empty());
  EXPECT_TRUE(proxy_.isDone());
  EXPECT_EQ(onlyDevice(*driver_).uid, device_.uid);
  EXPECT_EQ(proxy_.connections(), before + 1);
}

}  // namespace
}  // namespace tolvane::test
