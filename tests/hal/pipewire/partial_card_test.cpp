// A card of which only a part can be used, from the start or from some moment on.
#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"
#include "support/pipewire_proxy.h"

namespace tolvane::test {
namespace {

using hal::DeviceInfo;

/// The only device, once it has this many channels.
DeviceInfo onlyDeviceOf(hal::Driver& driver, std::size_t inputs, std::size_t outputs) {
  std::vector<DeviceInfo> devices;
  EXPECT_TRUE(eventually([&] {
    devices = driver.devices();
    return devices.size() == 1 && devices[0].inputStreams.size() == inputs &&
           devices[0].outputStreams.size() == outputs;
  }));
  return devices.empty() ? DeviceInfo{} : devices[0];
}

TEST(PipeWirePartialCard, OneOfWhoseNodesCannotBeLinkedStartsWithTheRest) {
  const PipeWireServer server({kCard});
  const auto routes = straightThrough(4);
  PatchRig rig(kCard, routes);
  PipeWireProperties spare = nodesOf(kCard)[1];
  spare["node.name"] = "card.spare";
  rig.client().addNode(spare);
  PipeWireProxy proxy;
  proxy.refuseLinksTo(rig.client().nodeId("card.spare"));
  const auto driver = hal::makePipeWireDriver();
  const DeviceInfo device = onlyDeviceOf(*driver, 4, 8);
  RoutingClient client(device, routes);
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(rig.settle());
  EXPECT_TRUE(client.isAlive());
  EXPECT_EQ(proxy.connections(), 1U);
}

/// A node that gets no ports, like one that the session manager cannot open.
PipeWireProperties unusableNode() {
  PipeWireProperties node = nodesOf(kCard)[1];
  node["node.name"] = "card.hdmi";
  node.erase("adapter.auto-port-config");
  return node;
}

TEST(PipeWirePartialCard, OneOfWhoseNodesCannotBeUsedIsListedAtOnceByAProgramThatListsOnce) {
  const PipeWireServer server({kCard});
  PipeWireClient manager;
  manager.addNodeWithoutPorts(unusableNode());
  const auto driver = hal::makePipeWireDriver();
  std::vector<DeviceInfo> devices = driver->devices();
  while (driver->awaitsServer()) devices = driver->devices();
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].inputStreams.size(), 4U);
  EXPECT_EQ(devices[0].outputStreams.size(), 4U);
}

TEST(PipeWirePartialCard, OneThatGetsANodeThatCannotBeUsedStaysListedAndHeard) {
  const PipeWireServer server({kCard});
  const auto driver = hal::makePipeWireDriver();
  const DeviceInfo device = onlyDeviceOf(*driver, 4, 4);
  const auto routes = straightThrough(4);
  RoutingClient client(device, routes);
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  PatchRig rig(kCard, routes);
  rig.client().addNodeWithoutPorts(unusableNode());
  onlyDeviceOf(*driver, 4, 4);
  EXPECT_TRUE(rig.settle());
  EXPECT_EQ(client.losses(), 0);
}

/// A routed card that loses nodes and gets them back, as when its profile changes.
class PipeWireProfileChange : public ::testing::Test {
 protected:
  void SetUp() override {
    device_ = onlyDeviceOf(*driver_, 4, 4);
    client_.emplace(device_, routes_);
    started_ = driver_->start(device_, *client_);
    ASSERT_EQ(started_.status, noErr);
  }

  void expectHeard() const {
    PatchRig rig(kCard, routes_);
    EXPECT_TRUE(rig.settle());
  }

  PipeWireServer server_{{kCard}};
  std::unique_ptr<hal::Driver> driver_ = hal::makePipeWireDriver();
  std::vector<PatchConnection> routes_ = straightThrough(4);
  DeviceInfo device_;
  std::optional<RoutingClient> client_;
  hal::StartResult started_;
  PipeWireClient session_;
};

TEST_F(PipeWireProfileChange, ToOutputsAloneIsListedAndGoesOn) {
  session_.removeNode("card.source");
  const DeviceInfo now = onlyDeviceOf(*driver_, 0, 4);
  EXPECT_EQ(now.uid, device_.uid);
  EXPECT_TRUE(client_->isAlive());
  const std::uint64_t cycles = client_->cycles();
  EXPECT_TRUE(eventually([&] { return client_->cycles() > cycles; }));
  session_.addNode(nodesOf(kCard)[0]);
  onlyDeviceOf(*driver_, 4, 4);
  expectHeard();
  EXPECT_TRUE(client_->isAlive());
}

TEST_F(PipeWireProfileChange, ToInputsAloneIsListedAndGoesOn) {
  session_.removeNode("card.sink");
  onlyDeviceOf(*driver_, 4, 0);
  EXPECT_TRUE(client_->isAlive());
  session_.addNode(nodesOf(kCard)[1]);
  onlyDeviceOf(*driver_, 4, 4);
  expectHeard();
}

TEST_F(PipeWireProfileChange, WhileItWasAwayComesBackWithWhatIsLeft) {
  session_.removeCard(kCard);
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  session_.addNode(nodesOf(kCard)[1]);
  EXPECT_TRUE(eventually([&] { return client_->isAlive(); }));
  onlyDeviceOf(*driver_, 0, 4);
}

TEST_F(PipeWireProfileChange, IsStartedAnewWithTheChannelsOfNow) {
  session_.removeNode("card.source");
  const DeviceInfo now = onlyDeviceOf(*driver_, 0, 4);
  started_.session.reset();
  RoutingClient client(now, {});
  const hal::StartResult started = driver_->start(now, client);
  EXPECT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.cycles() != 0; }));
}

}  // namespace
}  // namespace tolvane::test
